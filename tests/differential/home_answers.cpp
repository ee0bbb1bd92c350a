// Prints what the reader of policy documents, of setting rows and of profiles, the cipher and the
// conversions of texts answer to the lines of make_questions, which come in on standard input: a
// line for each, in plain ASCII. Both homes must print the same.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>

#include "host/setting_row.h"
#include "platform/codepage.h"
#include "platform/crt.h"
#include "platform/profile.h"
#include "policy/policy_file_cipher.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/recorder/recorder.h"
#include "tests/support/test_machine.h"

namespace {

constexpr wchar_t kFile[] = L"C:\\SigilTest\\Questions";

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
    if (line[0] < L'0' || line[0] > L'9') continue;  // a call, which Windows has nobody to note
    std::printf(" ! ");
    Print(line.substr(0, line.find(L' ', 2)));
  }
  RecorderReset();
  CWatermarkPolicyXMLParser::DeleteInstance();
  std::putchar('\n');
}

// --- Files: their bytes come as a field, a unit for each byte

void PrintBytes(const CByteArray& bytes) {
  for (INT_PTR i = 0; i < bytes.GetSize(); ++i) std::printf("%02X", bytes[i]);
}

void WriteFile(tests::TestMachine& machine, const std::wstring& units) {
  machine.Write(kFile, std::string(units.begin(), units.end()));
}

void PrintRows(tests::TestMachine& machine, std::istream& fields) {
  WriteFile(machine, Field(fields));
  CStdioFile file;
  CArray<CString> row;
  if (!file.Open(kFile, CFile::modeRead | CFile::typeText)) std::printf(" closed");
  for (RowRead read{}; (read = ReadRow(file, row)) != RowRead::kEnd;) {
    std::printf(" row");
    for (INT_PTR i = 0; i < row.GetSize() && read == RowRead::kFields; ++i) {
      std::printf(" [");
      Print(row[i].GetString());
      std::printf("]");
    }
  }
}

void PrintValues() {
  for (const wchar_t* section : {L"User", L"A b", L"[x"})
    for (const wchar_t* key : {L"State", L"Name", L" Name "}) {
      wchar_t text[40] = {};
      const DWORD length = GetPrivateProfileStringW(section, key, L"none ", text, 40, kFile);
      std::printf(" %u=", static_cast<unsigned>(length));
      Print(text);
      std::printf("/%d", static_cast<int>(GetPrivateProfileIntW(section, key, 7, kFile)));
    }
}

void PrintProfile(tests::TestMachine& machine, std::istream& fields) {
  WriteFile(machine, Field(fields));
  PrintValues();
  const std::wstring value = Field(fields);
  const BOOL isWritten = WritePrivateProfileStringW(L"User", L"Name", value.c_str(), kFile);
  std::printf(" written %d", isWritten != FALSE);
  PrintValues();
}

// --- Texts and bytes

void PrintText(std::istream& fields) {
  const std::wstring one = Field(fields), other = Field(fields);
  CString text(one.c_str());
  CByteArray bytes;
  std::printf(" ansi %d ", CPolicyFileCipher::TextToAnsiBytes(text, bytes));
  PrintBytes(bytes);
  std::printf(" digest ");
  Print(CPolicyFileCipher::HashHex(text).GetString());
  std::printf(" case %d trim ", text.CompareNoCase(other.c_str()) == 0);
  Print(text.Trim().GetString());
}

void PrintConverted(std::istream& fields) {
  CByteArray bytes, cipher, plain;
  for (const wchar_t unit : Field(fields)) bytes.Add(static_cast<BYTE>(unit));
  for (const UINT codePage : {CP_UTF8, CP_ACP}) {
    std::printf(" as ");
    Print(CPolicyFileCipher::BytesToText(codePage, bytes).GetString());
  }
  cipher.SetSize((bytes.GetSize() + 15) / 16 * 16);
  for (INT_PTR i = 0; i < bytes.GetSize(); ++i) cipher[i] = bytes[i];
  std::printf(" plain ");
  CPolicyFileCipher().DecryptChunkToBytes(cipher, plain);
  PrintBytes(plain);
}

/// On Windows what its own run-time makes of the format, which ours follows.
void PrintFormat(std::istream& fields) {
  const std::wstring format = Field(fields), text = Field(fields);
  const int number = _wtoi(Field(fields).c_str());
  const bool isText = format.back() == L's';
#ifdef _WIN32
  wchar_t made[2000] = {};
  if (isText)
    _snwprintf(made, 1999, format.c_str(), text.c_str());
  else
    _snwprintf(made, 1999, format.c_str(), number);
#else
  CString made;
  if (isText)
    made.Format(format.c_str(), text.c_str());
  else
    made.Format(format.c_str(), number);
#endif
  std::putchar(' ');
  Print(std::wstring(static_cast<LPCWSTR>(made)));
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
  tests::TestMachine machine;
  unsigned documents = 0;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream fields(line);
    const std::wstring kind = Field(fields);
    if (kind == L"document") {
      PrintDocument(documents++, fields);
      continue;
    }
    std::printf("- ");
    Print(kind);
    if (kind == L"number") PrintAnswer(L"", Field(fields).c_str());
    if (kind == L"rows") PrintRows(machine, fields);
    if (kind == L"profile") PrintProfile(machine, fields);
    if (kind == L"text") PrintText(fields);
    if (kind == L"bytes") PrintConverted(fields);
    if (kind == L"format") PrintFormat(fields);
    std::putchar('\n');
  }
  PrintUnits();
  return 0;
}
