#include "platform/mfc.h"

#include <gtest/gtest.h>

#include <climits>
#include <cwchar>

#include "tests/support/test_machine.h"

namespace {

template <typename... Arguments>
std::wstring Format(LPCWSTR format, const Arguments&... arguments) {
  CString text = L"before";
  text.Format(format, arguments...);
  return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

TEST(CString, ReplacesTrimsAndLendsItsBuffer) {
  CString text = L"{WinUser} and {WinUser}, {winuser}";
  EXPECT_EQ(text.Replace(L"{WinUser}", L"{WinUser}{WinUser}"), 2);
  EXPECT_EQ(text.Replace(L"{WinUser}", nullptr), 4);
  EXPECT_STREQ(text, L" and , {winuser}");
  CString padded = L"\t\x3000 \xA0 a b\r\n\x2003";
  EXPECT_STREQ(padded.Trim(), L"a b");
  std::wcscpy(padded.GetBuffer(10), L"0123456789");
  padded.ReleaseBuffer(2);
  EXPECT_STREQ(padded, L"01");
  EXPECT_STREQ(padded.Mid(1) + padded.Mid(2), L"1");
  EXPECT_THROW(padded[3], CInvalidArgException);
}

TEST(CString, ComparesLettersInEveryLocale) {
  for (const wchar_t* other : {L"VERSION ÄЖＡ", L"version äжａ"})
    EXPECT_EQ(CString(L"Version äЖＡ").CompareNoCase(other), 0);
  for (const wchar_t* other : {L"Versions", L"Versio", L"Ver\u00ADsion", L"Vers\u0131on", L""})
    EXPECT_NE(CString(L"Version").CompareNoCase(other), 0);
  EXPECT_THROW(CString().CompareNoCase(nullptr), CInvalidArgException);
}

TEST(CString, FormatsNumbersAndTextAndAnswersForWhatDoesNotFit) {
  for (const wchar_t* start : {L"%", L"%0", L"%1", L"%12", L"%02", L"%03", L"%012"})
    for (const wchar_t* type : {L"d", L"X"})
      for (const int value : {0, 1, -1, 42, 255, -12345, INT_MAX, INT_MIN}) {
        wchar_t expected[128] = {};
        const std::wstring format = std::wstring(start) + type;
        std::swprintf(expected, std::size(expected), format.c_str(), value);
        EXPECT_EQ(Format(format.c_str(), value), expected);
      }
  const CString own = L"会議室";
  EXPECT_EQ(Format(L"%s_%s|%5s", L"E1", own, L"ab"), L"E1_会議室|   ab");
  EXPECT_EQ(Format(L"%s|%02X%02X 100% ", LPCWSTR{}, BYTE{10}, 171), L"(null)|0AAB 100% ");
  EXPECT_EQ(Format(L"%s %d|%d %d %q%f%", 5, L"text", 7), L"%s %d|7 %d %q%f%");
  EXPECT_EQ(Format(L"%99999999999999999999d", 1).size(), 65535U);
  CString text = L"a";
  text.Format(L"%s%s", text, text.GetString());
  EXPECT_STREQ(text, L"aa");
}

TEST(CArray, GrowsWithZerosAndRefusesBadIndexes) {
  CByteArray bytes;
  bytes.SetSize(3);
  bytes[1] = 7;
  bytes.SetSize(2);
  bytes.SetSize(3);
  EXPECT_EQ(std::vector<BYTE>(bytes.GetData(), bytes.GetData() + 3), (std::vector<BYTE>{0, 7, 0}));
  EXPECT_THROW(bytes[3], CInvalidArgException);
  EXPECT_THROW(bytes.SetSize(-1), CException);
}

constexpr wchar_t kFile[] = L"C:\\SigilTest\\file.txt";

class Files : public testing::Test {
 protected:
  tests::TestMachine m_machine;
};

TEST_F(Files, AreAskedOpenedAndRead) {
  m_machine.Write(kFile, "hello\r\nworld");
  CFileStatus status;
  EXPECT_TRUE(CFile::GetStatus(kFile, status) && status.m_size == 12);
  EXPECT_TRUE(CFile::GetStatus(L"C:\\SigilTest", status) && status.m_size == 0);
  EXPECT_FALSE(CFile::GetStatus(L"C:\\no\\no", status));
  CFile file;
  ASSERT_TRUE(file.Open(kFile, CFile::modeRead | CFile::shareDenyNone));
  char bytes[20] = {};
  EXPECT_TRUE(file.Read(bytes, 5) == 5 && file.Read(bytes + 5, 15) == 7);
  EXPECT_STREQ(bytes, "hello\r\nworld");
  file.Close();
  EXPECT_THROW(file.Read(bytes, 1), CFileException);
  EXPECT_FALSE(file.Open(L"C:\\SigilTest", CFile::modeRead));
  EXPECT_FALSE(file.Open(L"C:\\SigilTest\\no", CFile::modeRead));
}

/// The lines, with `|` behind each.
std::wstring Lines() {
  CStdioFile file;
  EXPECT_TRUE(file.Open(kFile, CFile::typeText | CFile::modeRead));
  CString lines;
  for (CString line; file.ReadString(line);) lines += line + L"|";
  return lines.GetString();
}

TEST_F(Files, AreReadLineByLine) {
  using namespace std::string_literals;
  const std::string stretch(128, 'x');
  const std::wstring wide(128, L'x');
  using Row = std::pair<std::string, std::wstring>;
  for (const auto& [bytes, text] :
       {Row("", L""), Row("\n", L"|"), Row("63,1\r\n500,0\n\r\nlast", L"63,1|500,0||last|"),
        Row("a\rb\r\r\nc\r", L"a\rb\r|c\r|"), Row("a\x1A!\nc\n", L"a|"), Row("a\n\x1A", L"a|"),
        Row(stretch + "\n" + stretch, wide + L"|" + wide + L"|"),
        Row(stretch.substr(1) + "\nz", wide.substr(1) + L"|z|"),
        Row(std::string(1 << 20, 'y'), std::wstring(1 << 20, L'y') + L"|"),
        Row("a\0b\nc\n"s, L"a|c|"), Row("a\0"s + stretch + "\n", L"a|xx|"),
        Row("a\n\0b\nc\n"s, L"a|")}) {
    m_machine.Write(kFile, bytes);
    EXPECT_EQ(Lines(), text) << bytes.substr(0, 20);
  }
#ifndef _WIN32
  // The code page of the Windows machine is its own affair.
  m_machine.Write(kFile, "\x89\xEF\x8B\x63\x8E\xBA,1\xB1\n\x82\n,\n");
  EXPECT_EQ(Lines(), L"会議室,1ｱ|・|,|");
#endif
}

}  // namespace
