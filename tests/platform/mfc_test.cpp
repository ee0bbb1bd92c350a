#include "platform/mfc.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/support/test_machine.h"

namespace {

template <typename... Arguments>
std::wstring Format(LPCWSTR format, const Arguments&... arguments) {
  CString text = L"before";
  text.Format(format, arguments...);
  return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

TEST(CString, ComparesLettersInEveryLocale) {
  for (const wchar_t* other : {L"VERSION ÄЖＡ", L"version äжａ"})
    EXPECT_EQ(CString(L"Version äЖＡ").CompareNoCase(other), 0);
  for (const wchar_t* other : {L"Versions", L"Versio", L"Ver\u00ADsion", L"Vers\u0131on", L""})
    EXPECT_NE(CString(L"Version").CompareNoCase(other), 0);
  EXPECT_THROW(CString().CompareNoCase(nullptr), CInvalidArgException);
}

TEST(CString, FormatsNumbersAndTextAndAnswersForWhatDoesNotFit) {
  EXPECT_EQ(Format(L"%d|%03d|%4d|%X", INT_MIN, -7, 42, -1), L"-2147483648|-07|  42|FFFFFFFF");
  const CString own = L"会議室";
  EXPECT_EQ(Format(L"%s_%s|%5s", L"E1", own, L"ab"), L"E1_会議室|   ab");
  EXPECT_EQ(Format(L"%s|%02X%02X 100% ", LPCWSTR{}, BYTE{10}, 171), L"(null)|0AAB 100% ");
  EXPECT_EQ(Format(L"%s %d|%d %d %q%f%", 5, L"text", 7), L"%s %d|7 %d %q%f%");
  EXPECT_EQ(Format(L"%99999999999999999999d", 1).size(), 65535U);
  CString text = L"a";
  text.Format(L"%s%s", text, text.GetString());
  EXPECT_STREQ(text, L"aa");
}

constexpr wchar_t kFile[] = L"C:\\SigilTest\\file.txt";

class Files : public testing::Test {
 protected:
  tests::TestMachine m_machine;
};

/// The lines, with `|` behind each.
std::wstring Lines() {
  CStdioFile file;
  EXPECT_TRUE(file.Open(kFile, CFile::typeText | CFile::modeRead));
  CString lines;
  for (CString line; file.ReadString(line);) lines += line + L"|";
  return lines.GetString();
}

TEST_F(Files, AreTheReadersAloneUnlessTheyAreShared) {
  m_machine.Write(kFile, "63,1");
  CFile first, second;
  EXPECT_TRUE(first.Open(kFile, CFile::modeRead | CFile::shareDenyNone));
  EXPECT_TRUE(second.Open(kFile, CFile::modeRead | CFile::shareDenyNone));
#ifdef _WIN32
  EXPECT_FALSE(second.Open(kFile, CFile::modeRead));
#endif
  first.Close();
  second.Close();
  EXPECT_TRUE(second.Open(kFile, CFile::modeRead));
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
