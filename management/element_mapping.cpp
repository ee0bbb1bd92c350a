#include "management/element_mapping.h"

#include <algorithm>
#include <cwchar>

#include "component/reference.h"
#include "host/user_information.h"
#include "logging/log.h"
#include "platform/com.h"
#include "platform/crt.h"
#include "platform/owner.h"
#include "policy/watermark_policy_xml_parser.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kUserPlaceholder[] = L"{WinUser}";
constexpr std::int32_t kStampPosition = 4;

struct MappingMessages {
  LogMessage noElementId;
  LogMessage noRecord;
  LogMessage noWatermark;
  LogMessage done;
};

constexpr wchar_t kHeaderFooter[] = L"SigilSettingManagement::SetHeaderFooterInfo";
constexpr wchar_t kStamp[] = L"SigilSettingManagement::SetStampInfo";

constexpr MappingMessages kHeaderFooterMessages = {
    {4, 153100240, kHeaderFooter, L"ElementIDが無いため、フッターヘッダー設定処理中断"},
    {4, 153100250, kHeaderFooter,
     L"PrinterSettingsインスタンスが無いため、フッターヘッダー設定処理中断"},
    {4, 153100260, kHeaderFooter,
     L"Watermarkインターフェースの作成に失敗したため、フッターヘッダー設定処理中断"},
    {3, 153100270, kHeaderFooter, L"フッターヘッダー設定処理完了　ElementID：%s → GUID：%s"},
};

constexpr MappingMessages kStampMessages = {
    {4, 153100280, kStamp, L"ElementIDが無いため、スタンプ設定処理中断"},
    {4, 153100290, kStamp, L"PrinterSettingsインスタンスが無いため、スタンプ設定処理中断"},
    {4, 153100300, kStamp, L"Watermarkインターフェースの作成に失敗したため、スタンプ設定処理中断"},
    {3, 153100310, kStamp, L"スタンプ設定処理完了　ElementID：%s → GUID：%s"},
};

constexpr auto kFreeText = [](RPC_WSTR text) { RpcStringFreeW(&text); };

/// The properties of one element. Each is read from the document when it is asked for.
class CElement {
 public:
  CElement(CWatermarkPolicyXMLParser* parser, const CString& id) : m_pParser(parser), m_strId(id) {}

  const CString& Id() const { return m_strId; }
  CString Text(const wchar_t* name) const { return m_pParser->GetWatermarkElement(m_strId, name); }
  std::int32_t Integer(const wchar_t* name) const { return _wtoi(Text(name)); }
  double Real(const wchar_t* name) const { return _wtof(Text(name)); }
  std::int32_t Flag(const wchar_t* name) const { return Integer(name) == 1 ? 1 : 0; }

  std::int32_t Color(const wchar_t* name) const {
    const CString text = Text(name);
    const bool isHexadecimal = std::wcsncmp(text, L"0x", 2) == 0;
    const LONG number = isHexadecimal ? crt::wcstol(text, nullptr, 16) : _wtoi(text);
    return static_cast<std::int32_t>(number & 0xFFFFFF);
  }

 private:
  CWatermarkPolicyXMLParser* m_pParser;
  const CString& m_strId;
};

CString WithUserName(CString text) {
  CString userName;
  GetUserFullName(userName);
  text.Replace(kUserPlaceholder, userName);
  return text;
}

// Sizes not above 0 become 1.0, and so does a text without a number, which reads as 0.
double FontSize(double size) {
  if (!(size > 0.0)) return 1.0;
  return std::min(size, 200.0);
}

/// The component numbers the nine positions in another order than a policy does.
std::int32_t Position(std::int32_t printPos) {
  constexpr std::int32_t kPositions[] = {0, 1, 2, 6, 7, 8, 3, 4, 5};
  return printPos >= 1 && printPos <= 9 ? kPositions[printPos - 1] : 0;
}

double Offset(double offset) {
  return std::clamp(offset, -1000.0, 1000.0);
}

std::int32_t Space(std::int32_t space) {
  return std::clamp(space, -1000, 1000);
}

void SetAppearance(const CElement& element, Sigil::Watermark& watermark) {
  CString name;
  name.Format(L"%s_%s", element.Id(), element.Text(L"Name"));
  watermark.SetName(name);
  watermark.SetText(WithUserName(element.Text(L"Text")));
  watermark.SetFontSize(FontSize(element.Real(L"FontSize")));
  watermark.SetFontName(element.Text(L"FontName"));
  watermark.SetColor(element.Color(L"Color"));
  watermark.SetBold(element.Flag(L"Bold"));
  watermark.SetItalic(element.Flag(L"Italic"));
  watermark.SetUnderLine(element.Flag(L"UnderLine"));
  watermark.SetFit(element.Flag(L"Fit"));
  watermark.SetOpacity(std::clamp(element.Integer(L"Opacity"), 0, 100));
  watermark.SetRotate(std::clamp(element.Integer(L"Rotate"), 0, 359));
}

void PlaceHeaderFooter(const CElement& element, Sigil::Watermark& watermark) {
  watermark.SetPrintPos(Position(element.Integer(L"PrintPos")));
  watermark.SetPositionOption(0);
  watermark.SetXOffset(Offset(element.Real(L"XOffset")));
  watermark.SetYOffset(Offset(element.Real(L"YOffset")));
}

void PlaceStamp(const CElement& element, Sigil::Watermark& watermark) {
  watermark.SetPrintPos(kStampPosition);
  watermark.SetPositionOption(0);
  const std::int32_t repeatType = element.Integer(L"RepeatType");
  watermark.SetRepeatFirstAxis(repeatType & 1);
  watermark.SetRepeatSecondAxis((repeatType >> 1) & 1);
  watermark.SetRepeatHSpace(Space(element.Integer(L"RepeatHSpace")));
  watermark.SetRepeatVSpace(Space(element.Integer(L"RepeatVSpace")));
}

/// Maps an element of either kind. The kinds differ in `pfnPlace` and in their messages.
bool MapElement(const CString& elementId, Sigil::PrinterSettings* printerSettings, GUID* id,
                const MappingMessages& messages,
                void (*pfnPlace)(const CElement&, Sigil::Watermark&)) {
  if (elementId.IsEmpty()) {
    Log(messages.noElementId);
    return false;
  }
  if (printerSettings == nullptr) {
    Log(messages.noRecord);
    return false;
  }
  CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
  Sigil::CReference<Sigil::Watermark> watermark;
  if (Sigil::Failed(printerSettings->CreateWatermark(watermark.Out())) || !watermark) {
    Log(messages.noWatermark);
    return false;
  }
  const CElement element(parser, elementId);
  SetAppearance(element, *watermark);
  pfnPlace(element, *watermark);
  watermark->GetId(id);
  watermark.Reset();
  Owner<RPC_WSTR, kFreeText> text;
  UuidToStringW(id, text.Out());
  Log(messages.done, elementId, reinterpret_cast<const wchar_t*>(text.Get()));
  return true;
}

}  // namespace

bool SetHeaderFooterInfo(const CString& elementId, Sigil::PrinterSettings* printerSettings,
                         GUID* id) {
  return MapElement(elementId, printerSettings, id, kHeaderFooterMessages, PlaceHeaderFooter);
}

bool SetStampInfo(const CString& elementId, Sigil::PrinterSettings* printerSettings, GUID* id) {
  return MapElement(elementId, printerSettings, id, kStampMessages, PlaceStamp);
}

}  // namespace SigilSettingManagement
