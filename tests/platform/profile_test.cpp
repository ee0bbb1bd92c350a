#include "platform/profile.h"

#include <gtest/gtest.h>

#include <tuple>

#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

constexpr wchar_t kFile[] = L"C:\\SigilTest\\Some.ini";

/// What the call copies. It must not write behind its buffer.
std::string Get(LPCWSTR section, LPCWSTR key, DWORD capacity = 64, LPCWSTR file = kFile) {
  std::wstring text(capacity + 1, L'#');
  const DWORD length =
      GetPrivateProfileStringW(section, key, L" none  ", text.data(), capacity, file);
  EXPECT_EQ(text[length], L'\0');
  EXPECT_EQ(text[capacity], L'#');
  text.resize(length);
  return platform::ToUtf8(text);
}

class Profile : public testing::Test {
 protected:
  TestMachine m_machine;
};

TEST_F(Profile, ValuesAreFoundAsWindowsFindsThem) {
  m_machine.Write(kFile,
                  "Plain=before any section\r\n"
                  "; [Setting]\r\n"
                  "[Setting]\r\nPlain=C:\\EMS folder\r\n \tBlanks \t=\t on both sides \t\r\n"
                  "Double=\"  kept  \"\r\nSingle='x'\nTwice=\"\"y\"\"\nHalf=\"z\nMixed=\"z'\n"
                  "OneQuote=\"\nNothing=\nBare\n  ;Comment=1\nEquals=a=b;c\nPlain=second\n"
                  "Japanese=\x93\x63\x92\x86\nTrail=\x83\x5C\x83\x5D\n\x83\x4C\x81\x5B=wide key\n"
                  "[Other]\nPlain=other\n"
                  "[SETTING]\nLate=1\n"
                  "[\x95\x5C ]\nLast=no line end");
  using Row = std::pair<const wchar_t*, const char*>;
  for (const auto& [key, value] :
       {Row(L"Plain", "C:\\EMS folder"), Row(L"pLAIN", "C:\\EMS folder"),
        Row(L"Blanks", "on both sides"), Row(L"Double", "  kept  "), Row(L"Single", "x"),
        Row(L"Twice", "\"y\""), Row(L"Half", "\"z"), Row(L"Mixed", "\"z'"), Row(L"OneQuote", "\""),
        Row(L"Nothing", ""), Row(L"Bare", " none"), Row(L"Comment", " none"),
        Row(L"Equals", "a=b;c"), Row(L"Japanese", "田中"), Row(L"Trail", "ソゾ"),
        Row(L"キー", "wide key"), Row(L"Late", " none")})
    EXPECT_EQ(Get(L"sETTING", key), value) << platform::ToUtf8(key);
  EXPECT_EQ(Get(L"Other", L"Plain"), "other");
  EXPECT_EQ(Get(L"表", L"Last"), "no line end");
  EXPECT_EQ(Get(L"Other", L"Plain", 6) + Get(L"Other", L"Plain", 5) + Get(L"表", L"Last", 1),
            "otherothe");
  EXPECT_EQ(Get(L"Absent", L"Plain"), " none");
  EXPECT_EQ(Get(L"Setting", L"Plain", 64, L"C:\\SigilTest\\Absent.ini"), " none");
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  m_machine.WriteProfile(kFile, L"[Ünit]\r\nNäme=한국 \xD842\xDFB7\r\nHalf=\xD842\r\n");
  EXPECT_EQ(Get(L"ÜnIT", L"NäME"), "한국 𠮷");
  EXPECT_EQ(Get(L"Ünit", L"Half"), "\xEF\xBF\xBD");
}

TEST_F(Profile, AWriteChangesItsOwnLinesOnly) {
  const std::string rest = "[Other]\r\nKey=\x83\x5C\r\n; \x92\x86\r\n";
  using Row = std::tuple<std::string, const wchar_t*, const wchar_t*, std::string>;
  for (const auto& [before, key, value, after] :
       {Row("", L"Name", L"田中 \xD842\xDFB7", "[User]\r\nName=\x93\x63\x92\x86 ??\r\n"),
        Row("[USER]\r\nName=\r\n" + rest, L"NAME", L"x", "[USER]\r\nName=x\r\n" + rest),
        Row("[User]\r\nA=1\r\n" + rest, L"B", L"", "[User]\r\nA=1\r\nB=\r\n" + rest),
        Row("[New]\r\nA=1", L"B", L"2", "[New]\r\nA=1\r\n[User]\r\nB=2\r\n")}) {
    m_machine.Remove(kFile);
    if (!before.empty()) m_machine.Write(kFile, before);
    EXPECT_TRUE(WritePrivateProfileStringW(L"User", key, value, kFile));
    EXPECT_EQ(m_machine.Read(kFile), after) << before;
  }
  m_machine.WriteProfile(kFile, L"; 설명\r\n[User]\r\nA=1");
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"이름", L"한국", kFile));
  EXPECT_EQ(m_machine.Read(kFile),
            platform::ToUtf16LeBytes(L"\xFEFF; 설명\r\n[User]\r\nA=1\r\n이름=한국\r\n"));
  EXPECT_FALSE(WritePrivateProfileStringW(L"User", L"A", L"1", L"C:\\SigilTest\\Absent\\A.ini"));
  EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

}  // namespace
}  // namespace tests
