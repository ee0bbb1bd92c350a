// Prints what the reader of policy documents and the conversions of texts answer to the lines of
// make_documents, which come in on standard input: a line for each, in plain ASCII. Both homes must
// print the same.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>

#include "platform/crt.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/recorder/recorder.h"

namespace {

void Print(const std::wstring& text) {
  for (const wchar_t unit : text) {
    if (0x20 < unit && unit < 0x7F && unit != L'\\')
      std::putchar(static_cast<int>(unit));
    else
      std::printf("\\%04X", static_cast<unsigned>(unit));
  }
}

/// The next of the fields that tabs part.
std::wstring Field(std::istream& line) {
  std::string field;
  std::getline(line, field, '\t');
  std::wstring text;
  for (std::size_t at = 0; at < field.size(); ++at) {
    const bool isUnit = field[at] == '\\';
    text +=
        static_cast<wchar_t>(isUnit ? std::stoi(field.substr(at + 1, 4), nullptr, 16) : field[at]);
    if (isUnit) at += 4;
  }
  return text;
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

void PrintQueries(CWatermarkPolicyXMLParser& reader, std::istream& elementIds) {
  for (const int policy : {1, 2, -1, 0}) {
    std::vector<CString> ids;
    std::printf(" policy %d: %d", policy, reader.GetPolicyInfo(policy, ids));
    for (const CString& id : ids) PrintAnswer(L"id", id);
    PrintAnswer(L"scope", reader.GetPrinterScope(policy));
  }
  for (std::wstring id; !(id = Field(elementIds)).empty();)
    for (const wchar_t* child :
         {L"Kind", L"Name", L"Text", L"FontSize", L"Color", L"XOffset", L"Other"})
      PrintAnswer(child, reader.GetWatermarkElement(id.c_str(), child));
}

void PrintDocument(unsigned number, std::istream& fields) {
  std::printf("%u ", number);
  Print(Field(fields));
  CWatermarkPolicyXMLParser& reader = *CWatermarkPolicyXMLParser::GetInstance();
  const int loaded = reader.SetXmlData(Field(fields).c_str());
  std::printf(" load %d", loaded);
  if (loaded == 0) PrintQueries(reader, fields);
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

int main() {
  unsigned documents = 0;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream fields(line);
    if (Field(fields) == L"document") {
      PrintDocument(documents++, fields);
    } else {
      std::printf("number");
      PrintAnswer(L"", Field(fields).c_str());
      std::putchar('\n');
    }
  }
  PrintUnits();
  return 0;
}
