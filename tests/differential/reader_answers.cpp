// Prints what the reader of policy documents and the conversions of texts answer, a line for each
// document or number, in plain ASCII. Both homes must print the same.
//
//   reader_answers COUNT        the documents 0 to COUNT - 1, then the numbers
//   reader_answers show NUMBER  one document

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/crt.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/differential/documents.h"
#include "tests/recorder/recorder.h"

namespace {

using differential::Document;

void Print(const std::wstring& text) {
  for (const wchar_t unit : text) {
    if (0x20 < unit && unit < 0x7F && unit != L'\\')
      std::putchar(static_cast<int>(unit));
    else
      std::printf("\\%04X", static_cast<unsigned>(unit));
  }
}

/// The text, and what it is as a number.
void PrintAnswer(const wchar_t* label, const wchar_t* text) {
  std::putchar(' ');
  Print(label + std::wstring(L"=") + text);
  if (*text == L'\0') return;
  std::uint64_t bits = 0;
  const double real = _wtof(text);
  std::memcpy(&bits, &real, sizeof bits);
  wchar_t* end = nullptr;
  errno = 0;
  const LONG hexadecimal = crt::wcstol(text, &end, 16);
  std::printf(" int %d real %016llx hex %ld/%d%s", _wtoi(text),
              static_cast<unsigned long long>(bits), static_cast<long>(hexadecimal),
              static_cast<int>(end - text), errno == ERANGE ? " range" : "");
}

void PrintQueries(CWatermarkPolicyXMLParser& reader, const Document& document) {
  for (const int policy : {1, 2, -1, 0}) {
    std::vector<CString> ids;
    std::printf(" policy %d: %d", policy, reader.GetPolicyInfo(policy, ids));
    for (const CString& id : ids) PrintAnswer(L"id", id);
    PrintAnswer(L"scope", reader.GetPrinterScope(policy));
  }
  for (const std::wstring& id : document.elementIds)
    for (const wchar_t* child :
         {L"Kind", L"Name", L"Text", L"FontSize", L"Color", L"XOffset", L"Other"})
      PrintAnswer(child, reader.GetWatermarkElement(id.c_str(), child));
}

void PrintDocument(unsigned number) {
  const Document document = differential::MakeDocument(number);
  std::printf("%u ", number);
  Print(document.kind);
  CWatermarkPolicyXMLParser& reader = *CWatermarkPolicyXMLParser::GetInstance();
  const int loaded = reader.SetXmlData(document.xml.c_str());
  std::printf(" load %d", loaded);
  if (loaded == 0) PrintQueries(reader, document);
  // The numbers of the log lines, without their texts, which are the platform's.
  for (std::size_t i = 0; i < RecorderCount(); ++i) {
    const std::wstring line = RecorderLine(i);
    std::printf(" ! ");
    Print(line.substr(0, line.find(L' ', 2)));
  }
  RecorderReset();
  CWatermarkPolicyXMLParser::DeleteInstance();
  std::putchar('\n');
}

/// A line for each 256 units: those that are white space, and those whose value counts in a number.
void PrintUnits() {
  for (unsigned row = 0; row < 0x100; ++row) {
    std::printf("units %02X", row);
    for (unsigned unit = row << 8; unit < (row + 1) << 8; ++unit) {
      const wchar_t text[] = {static_cast<wchar_t>(unit), L'5', L'\0'};
      if (crt::iswspace(text[0])) std::printf(" %04X:space", unit);
      if (_wtoi(text) != 0 || _wtof(text) != 0)
        std::printf(" %04X:%d/%.0f", unit, _wtoi(text), _wtof(text));
    }
    std::putchar('\n');
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto number = argc < 2 ? 0 : static_cast<unsigned>(std::atoi(argv[argc - 1]));
  if (argc == 3) {
    Print(differential::MakeDocument(number).xml);
    return 0;
  }
  for (unsigned each = 0; each < number; ++each) PrintDocument(each);
  differential::Dice dice(number);
  for (int i = 0; i < 500; ++i) {
    std::printf("number");
    PrintAnswer(L"", differential::MakeNumber(dice).c_str());
    std::putchar('\n');
  }
  PrintUnits();
  return 0;
}
