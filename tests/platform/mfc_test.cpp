#include "platform/mfc.h"

#include <gtest/gtest.h>

#include <climits>
#include <cwchar>

#include "platform/faults.h"
#include "tests/support/test_machine.h"

namespace {

std::wstring Text(const CString& text) {
  return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

template <typename... Arguments>
std::wstring Format(LPCWSTR format, const Arguments&... arguments) {
  CString text = L"before";
  text.Format(format, arguments...);
  return Text(text);
}

TEST(CString, ConstructsJoinsAndCompares) {
  const CString none(nullptr);
  EXPECT_TRUE(none.IsEmpty());
  EXPECT_STREQ(none, L"");
  CString text(L"abcdef", 3);
  EXPECT_EQ(Text(L"<" + text + L'|' + text + L">"), L"<abc|abc>");
  text += text;
  EXPECT_TRUE(text == L"abcabc" && L"abcabc" == text && text == CString(L"abcabc") &&
              text != L"abc");
  EXPECT_TRUE(CString(L"a") < CString(L"b") && !(CString(L"b") < CString(L"b")));
  EXPECT_LT(CString(L"\x7FFF").Compare(L"\xFFFD"), 0);
  EXPECT_GT(CString(L"ab").Compare(L"a"), 0);
  EXPECT_LT(CString(L"B").Compare(L"a"), 0);
  EXPECT_EQ(CString(L"aBc").CompareNoCase(L"AbC"), 0);
  EXPECT_GT(CString(L"B").CompareNoCase(L"a"), 0);
  EXPECT_LT(CString(L"a").CompareNoCase(L"AB"), 0);
  EXPECT_THROW(text.Compare(nullptr), CInvalidArgException);
  text.Empty();
  EXPECT_EQ(text.GetLength(), 0);
}

TEST(CString, PositionsAreCheckedOrPulledIn) {
  const CString text = L"abcabc";
  EXPECT_EQ(text[5], L'c');
  EXPECT_EQ(text.GetAt(6), L'\0');
  EXPECT_THROW(text[7], CInvalidArgException);
  EXPECT_THROW(text.GetAt(-1), CInvalidArgException);
  const std::pair<CString, const wchar_t*> parts[] = {
      {text.Left(2), L"ab"},   {text.Left(-1), L""},          {text.Left(9), L"abcabc"},
      {text.Right(2), L"bc"},  {text.Right(-1), L""},         {text.Right(9), L"abcabc"},
      {text.Mid(4), L"bc"},    {text.Mid(-1), L"abcabc"},     {text.Mid(9), L""},
      {text.Mid(1, 2), L"bc"}, {text.Mid(4, INT_MAX), L"bc"}, {text.Mid(INT_MAX, INT_MAX), L""},
      {text.Mid(-5, 1), L"a"}, {text.Mid(1, -1), L""}};
  for (const auto& [got, wanted] : parts) EXPECT_STREQ(got, wanted);
  const int places[] = {text.Find(L"ca"), text.Find(L"ab", 1), text.Find(L'c', 3),
                        text.Find(L"x"),  text.Find(L"a", 7),  text.Find(L"a", -1),
                        text.Find(L"", 6)};
  EXPECT_EQ(std::vector<int>(std::begin(places), std::end(places)),
            (std::vector<int>{2, 3, 5, -1, -1, -1, 6}));
}

TEST(CString, ReplacesTrimsAndLendsItsBuffer) {
  CString text = L"{WinUser} and {WinUser}, {winuser}";
  EXPECT_EQ(text.Replace(L"{WinUser}", L"{WinUser}{WinUser}"), 2);
  EXPECT_EQ(text.Replace(L"{WinUser}", nullptr), 4);
  EXPECT_STREQ(text, L" and , {winuser}");
  EXPECT_EQ(text.Replace(L"", L"x"), 0);
  CString overlap = L"aaa";
  EXPECT_EQ(overlap.Replace(L"aa", L"b"), 1);
  EXPECT_STREQ(overlap, L"ba");

  CString padded = L"\t\x3000 \xA0 a b\r\n\x2003";
  EXPECT_STREQ(padded.Trim(), L"a b");
  CString blank = L" \x3000";
  EXPECT_STREQ(blank.Trim(), L"");

  wchar_t* const buffer = padded.GetBuffer(10);
  std::wcscpy(buffer, L"0123456789");
  padded.ReleaseBuffer();
  EXPECT_EQ(Text(padded), L"0123456789");
  padded.ReleaseBuffer(2);
  EXPECT_EQ(Text(padded), L"01");
}

std::wstring Reference(const std::wstring& format, auto value) {
  wchar_t text[128] = {};
  std::swprintf(text, std::size(text), format.c_str(), value);
  return text;
}

TEST(CString, FormatsNumbersAsTheRunTimeDoes) {
  const int values[] = {0, 1, -1, 42, 255, -12345, INT_MAX, INT_MIN};
  for (const wchar_t* flags : {L"", L"-", L"0", L"#", L"+", L" ", L"-0", L"+ ", L"#0", L"-+#"})
    for (const wchar_t* size : {L"", L"1", L"12", L".0", L".1", L"12.5", L"2.12", L"."})
      for (const wchar_t* type : {L"d", L"i", L"u", L"x", L"X"}) {
        // Wine's run-time has the blank also before numbers that have no sign.
        if (tests::IsWine() && std::wcschr(flags, L' ') && std::wcschr(L"uxX", *type)) continue;
        const std::wstring start = L"%" + std::wstring(flags) + size;
        for (const int value : values) {
          EXPECT_EQ(Format((start + type).c_str(), value), Reference(start + type, value));
          EXPECT_EQ(Format((start + L"l" + type).c_str(), value), Reference(start + type, value));
        }
      }
}

TEST(CString, FormatsTextAndAnswersForWhatDoesNotFit) {
  const CString own = L"会議室";
  EXPECT_EQ(Format(L"%s_%s|%5s|%-5s|%.1s|%3.2s|%.9s", L"E1", own, L"ab", L"ab", own, L"xyz", L"z"),
            L"E1_会議室|   ab|ab   |会| xy|z");
  EXPECT_EQ(Format(L"%c|%3c|%-3c|%05s|%ls", L'会', 65, L'b', L"ab", L"w"), L"会|  A|b  |000ab|w");
  EXPECT_EQ(Format(L"%s|%.3s", static_cast<LPCWSTR>(nullptr), static_cast<wchar_t*>(nullptr)),
            L"(null)|(nu");
  EXPECT_EQ(Format(L"%02X%02x 100%% %5%", BYTE{10}, 171), L"0Aab 100% %");
  EXPECT_EQ(Format(L"%c", 0), std::wstring(1, L'\0'));
  EXPECT_EQ(Format(L"%d", 0x100000001LL), L"1");
  EXPECT_EQ(Format(L"%s %d|%d", 5, L"text", 7), L"%s %d|7");
  EXPECT_EQ(Format(L"%d %d %5.2s", 1), L"1 %d %5.2s");
  EXPECT_EQ(Format(L"%q%f%", 1), L"%q%f%");
  EXPECT_EQ(Format(L"%"), L"%");
  EXPECT_EQ(Format(L"%99999999999999999999d", 1).size(), 65535U);
  CString text = L"a";
  text.Format(L"%s%s", text, text.GetString());
  EXPECT_STREQ(text, L"aa");
  EXPECT_THROW(text.Format(nullptr), CInvalidArgException);
}

TEST(CArray, GrowsWithZerosAndRefusesBadIndexes) {
  CByteArray bytes;
  bytes.SetSize(3);
  bytes[1] = 7;
  EXPECT_EQ(bytes.Add(9), 3);
  bytes.SetSize(2);
  bytes.SetSize(4);
  EXPECT_EQ(std::vector<BYTE>(bytes.GetData(), bytes.GetData() + bytes.GetSize()),
            (std::vector<BYTE>{0, 7, 0, 0}));
  EXPECT_THROW(bytes[4], CInvalidArgException);
  EXPECT_THROW(bytes.GetAt(-1), CInvalidArgException);
  EXPECT_THROW(bytes.SetAt(4, 0), CInvalidArgException);
  EXPECT_THROW(bytes.SetSize(-1), CException);
  CByteArray copy;
  copy.Copy(bytes);
  EXPECT_EQ(copy.Append(copy), 4);
  EXPECT_EQ(copy.GetAt(5), 7);
  EXPECT_EQ(copy.GetCount(), 8);
  copy.RemoveAll();
  EXPECT_TRUE(copy.IsEmpty());
  CArray<CString> texts;
  texts.Add(L"a");
  texts.SetSize(2);
  EXPECT_STREQ(texts[1], L"");
}

constexpr wchar_t kFile[] = L"C:\\SigilTest\\file.txt";

class Files : public testing::Test {
 protected:
  tests::TestMachine m_machine;
};

TEST_F(Files, AreAskedOpenedAndRead) {
  m_machine.Write(kFile, "hello\r\nworld");
  CFileStatus status;
  ASSERT_TRUE(CFile::GetStatus(kFile, status));
  EXPECT_EQ(status.m_size, 12U);
  EXPECT_TRUE(CFile::GetStatus(L"C:\\SigilTest", status));
  EXPECT_EQ(status.m_size, 0U);
  for (const wchar_t* absent : {L"C:\\SigilTest\\no", L"C:\\no\\no", L"", LPCWSTR{}})
    EXPECT_FALSE(CFile::GetStatus(absent, status));

  CFile file;
  ASSERT_TRUE(file.Open(kFile, CFile::modeRead | CFile::shareDenyNone));
  char bytes[20] = {};
  EXPECT_EQ(file.Read(bytes, 5), 5U);
  EXPECT_EQ(file.GetLength(), 12U);
  EXPECT_EQ(file.Read(bytes + 5, 15), 7U);
  EXPECT_STREQ(bytes, "hello\r\nworld");
  EXPECT_EQ(file.Read(bytes, 1), 0U);
  file.Close();
  EXPECT_THROW(file.Read(bytes, 1), CFileException);

  CFileException error;
  EXPECT_FALSE(file.Open(L"C:\\SigilTest\\no", CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
  EXPECT_EQ(error.m_lOsError, 2);
  EXPECT_STREQ(error.m_strFileName, L"C:\\SigilTest\\no");
  EXPECT_FALSE(file.Open(L"C:\\SigilTest", CFile::modeRead, &error));
  EXPECT_EQ(error.m_cause, CFileException::accessDenied);
  EXPECT_FALSE(file.Open(kFile, 0x1000));
  EXPECT_FALSE(file.Open(nullptr, 0));
}

std::vector<std::wstring> Lines(UINT flags) {
  CStdioFile file;
  EXPECT_TRUE(file.Open(kFile, flags));
  std::vector<std::wstring> lines;
  for (CString line; file.ReadString(line);) lines.push_back(Text(line));
  return lines;
}

TEST_F(Files, AreReadLineByLine) {
  using LineList = std::vector<std::wstring>;
  const std::string stretch(128, 'x');
  const std::wstring wide(128, L'x');
  const std::string longLine(1 << 20, 'y');
  const struct {
    std::string bytes;
    LineList text;
  } cases[] = {
      {"", {}},
      {"\n", {L""}},
      {"63,1\r\n500,0\n\r\nlast", {L"63,1", L"500,0", L"", L"last"}},
      {"a\rb\r\r\nc\r", {L"a\rb\r", L"c\r"}},
      {"a\x1A"
       "b\nc\n",
       {L"a"}},
      {"a\n\x1A", {L"a"}},
      {stretch + "\n" + stretch, {wide, wide}},
      {stretch.substr(1) + "\nz", {wide.substr(1), L"z"}},
      {longLine, {std::wstring(longLine.begin(), longLine.end())}},
      {std::string("a\0b\nc\n", 6), {L"a", L"c"}},
      {std::string("a\0", 2) + stretch + "\n", {L"a", L"xx"}},
      {std::string("a\n\0b\nc\n", 7), {L"a"}},
  };
  for (const auto& each : cases) {
    m_machine.Write(kFile, each.bytes);
    EXPECT_EQ(Lines(CFile::typeText | CFile::modeRead), each.text) << each.bytes.substr(0, 20);
  }
  m_machine.Write(kFile,
                  "a\r\nb\x1A"
                  "c\nd");
  EXPECT_EQ(Lines(CFile::typeBinary), (LineList{L"a\r",
                                                L"b\x1A"
                                                L"c",
                                                L"d"}));
}

#ifndef _WIN32
// The code page of the Windows machine is its own affair.
TEST_F(Files, AreWidenedByTheAnsiCodePage) {
  m_machine.Write(kFile, "\x89\xEF\x8B\x63\x8E\xBA,1\xB1\n\x82\n,\n");
  EXPECT_EQ(Lines(CFile::typeText), (std::vector<std::wstring>{L"会議室,1ｱ", L"・", L","}));
}
#endif

TEST_F(Files, FailInTheirOwnWays) {
  CStdioFile closed;
  CString line;
  EXPECT_THROW(closed.ReadString(line), CFileException);
  if (!platform::kHasFaults) GTEST_SKIP() << "no faults in this home";
  m_machine.Write(kFile, "one\ntwo\n");
  CFileStatus status;
  CStdioFile file;
  platform::SetFault("CFile::GetStatus", 0, 5);
  platform::SetFault("CStdioFile::Open", 1, 32);
  platform::SetFault("CStdioFile::ReadString", 1, 30);
  EXPECT_FALSE(CFile::GetStatus(kFile, status));
  ASSERT_TRUE(file.Open(kFile, CFile::typeText));
  EXPECT_TRUE(file.ReadString(line));
  try {
    file.ReadString(line);
    FAIL();
  } catch (const CFileException& error) {
    EXPECT_EQ(error.m_lOsError, 30);
    EXPECT_STREQ(error.m_strFileName, kFile);
  }
  CFileException error;
  EXPECT_FALSE(file.Open(kFile, CFile::typeText, &error));
  EXPECT_EQ(error.m_lOsError, 32);
}

TEST(ExtensionModule, OwnsItsLibrariesUntilItEnds) {
  static AFX_EXTENSION_MODULE state;
  const auto module = reinterpret_cast<HMODULE>(&state);
  platform::SetFault("AfxInitExtensionModule", 0, 1);
  EXPECT_EQ(AfxInitExtensionModule(state, module), platform::kHasFaults ? FALSE : TRUE);
  platform::ClearFaults();
  EXPECT_TRUE(AfxInitExtensionModule(state, module));
  EXPECT_EQ(state.hModule, module);
  // Were one of them not deleted, the leak checker would tell.
  new CDynLinkLibrary(state, FALSE);
  const auto* second = new CDynLinkLibrary(state);
  new CDynLinkLibrary(state);
  delete second;
  AfxTermExtensionModule(state, FALSE);
  EXPECT_FALSE(state.bInitialized);
}

}  // namespace
