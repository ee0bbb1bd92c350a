// One element of any texts becomes a watermark.

#include <cstdlib>

#include "component/operation_sigil_settings.h"
#include "fuzz/machine.h"
#include "management/set_watermark_info.h"
#include "policy/watermark_policy_xml_parser.h"

namespace {

std::wstring Escaped(std::wstring_view text) {
  std::wstring escaped;
  for (const wchar_t unit : text) {
    if (unit == L'<' || unit == L'&') {
      escaped += unit == L'<' ? L"&lt;" : L"&amp;";
    } else {
      escaped += unit;
    }
  }
  return escaped;
}

/// Each line is the text of one property, in turn.
std::wstring Document(std::string_view input) {
  constexpr const wchar_t* kNames[] = {
      L"Kind",    L"Name",    L"Text",       L"FontSize",     L"FontName",    L"Color",
      L"Bold",    L"Italic",  L"Fit",        L"Opacity",      L"Rotate",      L"PrintPos",
      L"XOffset", L"YOffset", L"RepeatType", L"RepeatHSpace", L"RepeatVSpace"};
  std::wstring properties;
  for (const wchar_t* name : kNames) {
    const std::size_t end = input.find('\n');
    const std::wstring text = Escaped(fuzz::Wide(input.substr(0, end)));
    properties += L"<" + std::wstring(name) + L">" + text + L"</" + name + L">";
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
  }
  return L"<QuietMIMOSA><HLE><Watermark><Elements><Element ID='E'>" + properties +
         L"</Element></Elements></Watermark></HLE></QuietMIMOSA>";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Machine machine;
  OperationSigilSettings settings;
  Sigil::CReference<Sigil::PrinterSettings> record;
  if (!settings.CreateInstance() || !settings.GetPrinterSettingsOpe(L"*", record.Out()))
    std::abort();
  const std::wstring document = Document(fuzz::Text(data, size));
  if (CWatermarkPolicyXMLParser::GetInstance()->SetXmlData(document.c_str()) == 0) {
    GUID id = {};
    SigilSettingManagement::SetSortingWatermarkInfo(L"E", *record, &id);
  }
  CWatermarkPolicyXMLParser::DeleteInstance();
  return 0;
}
