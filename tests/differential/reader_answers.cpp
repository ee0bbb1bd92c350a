// Prints what the reader of policy documents and the conversions of texts answer, a line for each
// document or number, in plain ASCII. Both homes must print the same.
//
//   reader_answers COUNT        the documents 0 to COUNT - 1, then the numbers
//   reader_answers show NUMBER  one document

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "platform/crt.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/differential/documents.h"
#include "tests/recorder/recorder.h"

namespace {

using differential::Dice;
using differential::Document;

/// One unit, or both halves of a character that a literal has as one.
void PrintUnit(unsigned unit) {
  if (unit > 0xFFFF) {
    PrintUnit(0xD7C0U + (unit >> 10));
    PrintUnit(0xDC00U + (unit & 0x3FF));
  } else if (0x20 < unit && unit < 0x7F && unit != '\\') {
    std::putchar(static_cast<int>(unit));
  } else {
    std::printf("\\%04X", unit);
  }
}

void Print(const wchar_t* text) {
  for (; *text != L'\0'; ++text) PrintUnit(static_cast<unsigned>(*text));
}

void PrintNumbers(const wchar_t* text) {
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

void PrintAnswer(const char* label, const CString& text) {
  std::printf(" %s=", label);
  Print(text);
  if (!text.IsEmpty()) PrintNumbers(text);
}

/// The numbers of the log lines, without their texts, which are the platform's.
void PrintLog() {
  for (std::size_t i = 0; i < RecorderCount(); ++i) {
    const std::wstring line = RecorderLine(i);
    std::printf(" ! ");
    Print(line.substr(0, line.find(L' ', 2)).c_str());
  }
  RecorderReset();
}

void PrintQueries(CWatermarkPolicyXMLParser& reader, const Document& document) {
  for (const int policy : {1, 2, -1, 0}) {
    std::vector<CString> ids;
    std::printf(" policy %d: %d", policy, reader.GetPolicyInfo(policy, ids));
    for (const CString& id : ids) PrintAnswer("id", id);
    PrintAnswer("scope", reader.GetPrinterScope(policy));
  }
  for (const std::wstring& id : document.elementIds)
    for (const char* child : {"Kind", "Name", "Text", "FontSize", "Color", "XOffset", "Other"})
      PrintAnswer(child, reader.GetWatermarkElement(
                             id.c_str(), std::wstring(child, child + std::strlen(child)).c_str()));
}

void PrintDocument(unsigned number) {
  const Document document = differential::MakeDocument(number);
  std::printf("%u %s", number, document.kind.c_str());
  CWatermarkPolicyXMLParser& reader = *CWatermarkPolicyXMLParser::GetInstance();
  const int loaded = reader.SetXmlData(document.xml.c_str());
  std::printf(" load %d", loaded);
  if (loaded == 0) PrintQueries(reader, document);
  PrintLog();
  CWatermarkPolicyXMLParser::DeleteInstance();
  std::putchar('\n');
}

void PrintNumberLine(const std::wstring& text) {
  std::printf("number ");
  Print(text.c_str());
  PrintNumbers(text.c_str());
  std::putchar('\n');
}

/// A line for each 256 units: those that are white space, and those whose value counts in a number.
void PrintUnits() {
  for (unsigned row = 0; row < 0x100; ++row) {
    std::printf("units %02X", row);
    for (unsigned unit = row << 8; unit < (row + 1) << 8; ++unit) {
      if (unit == 0) continue;
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
  if (argc == 3 && std::strcmp(argv[1], "show") == 0) {
    Print(differential::MakeDocument(static_cast<unsigned>(std::atoi(argv[2]))).xml.c_str());
    std::putchar('\n');
    return 0;
  }
  if (argc != 2) return 2;
  const auto count = static_cast<unsigned>(std::atoi(argv[1]));
  for (unsigned number = 0; number < count; ++number) PrintDocument(number);
  Dice dice(count);
  for (int i = 0; i < 500; ++i) PrintNumberLine(differential::MakeNumber(dice));
  PrintUnits();
  return 0;
}
