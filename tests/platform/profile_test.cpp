#include "platform/profile.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

constexpr wchar_t kFile[] = L"C:\\SigilTest\\Some.ini";

/// What the call copies, NULs as '|'. It must not write behind its buffer.
std::string Get(LPCWSTR section, LPCWSTR key, LPCWSTR fallback, DWORD capacity = 64,
                LPCWSTR file = kFile) {
  constexpr wchar_t kGuard = L'#';
  std::wstring text(capacity + 1, kGuard);
  const DWORD length =
      GetPrivateProfileStringW(section, key, fallback, text.data(), capacity, file);
  EXPECT_EQ(text[length], L'\0');
  EXPECT_EQ(text[capacity], kGuard);
  text.resize(length);
  std::replace(text.begin(), text.end(), L'\0', L'|');
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
                  "[Setting]\r\n"
                  "Plain=C:\\EMS folder\r\n"
                  " \tBlanks \t=\t on both sides \t\r\n"
                  "Double=\"  kept  \"\r\n"
                  "Single='x'\n"
                  "Twice=\"\"y\"\"\n"
                  "Half=\"z\n"
                  "Mixed=\"z'\n"
                  "OneQuote=\"\n"
                  "Nothing=\n"
                  "Bare\n"
                  "  ;Comment=1\n"
                  "Equals=a=b;c\n"
                  "Plain=second\n"
                  "Japanese=\x93\x63\x92\x86\n"
                  "Trail=\x83\x5C\x83\x5D\n"
                  "\x83\x4C\x81\x5B=wide key\n"
                  "[Other]\n"
                  "Plain=other\n"
                  "[SETTING]\n"
                  "Late=1\n"
                  "[\x95\x5C ]\n"
                  "Last=no line end");
  const struct {
    const wchar_t* section;
    const wchar_t* key;
    const char* expected;
  } kCases[] = {
      {L"Setting", L"Plain", "C:\\EMS folder"},
      {L"sETTING", L"pLAIN", "C:\\EMS folder"},
      {L"Other", L"Plain", "other"},
      {L"Setting", L"Blanks", "on both sides"},
      {L"Setting", L"Double", "  kept  "},
      {L"Setting", L"Single", "x"},
      {L"Setting", L"Twice", "\"y\""},
      {L"Setting", L"Half", "\"z"},
      {L"Setting", L"Mixed", "\"z'"},
      {L"Setting", L"OneQuote", "\""},
      {L"Setting", L"Nothing", ""},
      {L"Setting", L"Bare", " missing"},
      {L"Setting", L"Comment", " missing"},
      {L"Setting", L"Equals", "a=b;c"},
      {L"Setting", L"Japanese", "田中"},
      {L"Setting", L"Trail", "ソゾ"},
      {L"Setting", L"キー", "wide key"},
      {L"Setting", L"Late", " missing"},
      {L"表", L"Last", "no line end"},
      {L"Absent", L"Plain", " missing"},
  };
  for (const auto& each : kCases)
    EXPECT_EQ(Get(each.section, each.key, L" missing  "), each.expected)
        << platform::ToUtf8(each.section) << " " << platform::ToUtf8(each.key);
  EXPECT_EQ(Get(L"Setting", L"Plain", nullptr, 64, L"C:\\SigilTest\\Absent.ini"), "");
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Profile, WideFilesKeepEveryCharacter) {
  m_machine.WriteProfile(kFile, L"[Ünit]\r\nNäme=한국 \xD842\xDFB7\r\nHalf=\xD842\r\n");
  EXPECT_EQ(Get(L"ÜnIT", L"NäME", L""), "한국 𠮷");
  EXPECT_EQ(Get(L"Ünit", L"Half", L""), "\xEF\xBF\xBD");
}

TEST_F(Profile, WhatDoesNotFitIsCut) {
  m_machine.Write(kFile, "[One]\nA=12345\nBc=\n[Two]\n[Three]\n");
  const struct {
    const wchar_t* section;
    const wchar_t* key;
    DWORD capacity;
    const char* expected;
  } kCases[] = {
      {L"One", L"A", 6, "12345"},
      {L"One", L"A", 5, "1234"},
      {L"One", L"A", 1, ""},
      {L"One", nullptr, 7, "A|Bc|"},
      {L"One", nullptr, 5, "A|B"},
      {nullptr, nullptr, 16, "One|Two|Three|"},
      {nullptr, nullptr, 14, "One|Two|Thre"},
      {L"Two", nullptr, 5, ""},
      {L"Absent", nullptr, 5, ""},
  };
  for (const auto& each : kCases)
    EXPECT_EQ(Get(each.section, each.key, L"", each.capacity), each.expected) << each.capacity;
  EXPECT_EQ(GetPrivateProfileStringW(L"One", L"A", L"", nullptr, 0, kFile), 0U);
}

TEST_F(Profile, NumbersEndAtTheFirstOtherCharacter) {
  const struct {
    const char* value;
    UINT expected;
  } kCases[] = {
      {"1", 1},
      {"-1", 0xFFFFFFFF},
      {"+1", 1},
      {" 007 ", 7},
      {"\"8\"", 8},
      {"42A94967297", 42},
      {"B4294967297", 0},
      {"4294967297", 1},
      {"-4294967297", 0xFFFFFFFF},
      {"3.9", 3},
      {"99999999999999999999", 0x630FFFFF},
  };
  for (const auto& each : kCases) {
    m_machine.Write(kFile, "[User]\nState=" + std::string(each.value));
    EXPECT_EQ(GetPrivateProfileIntW(L"User", L"State", 70, kFile), each.expected) << each.value;
  }
  EXPECT_EQ(GetPrivateProfileIntW(L"User", L"Other", -70, kFile), static_cast<UINT>(-70));
}

TEST_F(Profile, AWriteChangesItsOwnLinesOnly) {
  const std::string rest = "; note \x92\x86\r\n[Other]\r\nKey=\x83\x5C\r\n";
  const struct {
    std::string before;
    const wchar_t* section;
    const wchar_t* key;
    const wchar_t* value;
    std::string after;
  } kCases[] = {
      {"", L"User", L"Name", L"田中 \xD842\xDFB7", "[User]\r\nName=\x93\x63\x92\x86 ??\r\n"},
      {"[User]\r\nName=\r\n" + rest, L"USER", L"NAME", L"x", "[User]\r\nName=x\r\n" + rest},
      {"[User]\r\nA=1\r\n" + rest, L"User", L"B", L"2",
       "[User]\r\nA=1\r\n; note \x92\x86\r\nB=2\r\n[Other]\r\nKey=\x83\x5C\r\n"},
      {"[User]\r\nA=1", L"User", L"B", L"2", "[User]\r\nA=1\r\nB=2\r\n"},
      {"[User]", L"User", L"B", L"", "[User]\r\nB=\r\n"},
      {"[User]\r\nA=1", L"New", L"B", L"2", "[User]\r\nA=1\r\n[New]\r\nB=2\r\n"},
      {"[User]\r\nA=1\r\nB=2\r\nA=3\r\n", L"User", L"a", nullptr, "[User]\r\nB=2\r\nA=3\r\n"},
      {"[User]\r\nA=1\r\n" + rest, L"user", nullptr, nullptr, "[Other]\r\nKey=\x83\x5C\r\n"},
      {rest, L"User", L"A", nullptr, rest},
      {rest, L"User", nullptr, nullptr, rest},
  };
  for (const auto& each : kCases) {
    m_machine.Remove(kFile);
    if (!each.before.empty()) m_machine.Write(kFile, each.before);
    EXPECT_TRUE(WritePrivateProfileStringW(each.section, each.key, each.value, kFile));
    EXPECT_EQ(m_machine.Read(kFile), each.after) << each.before;
  }
}

TEST_F(Profile, AWideFileStaysWide) {
  m_machine.WriteProfile(kFile, L"; 설명\r\n[User]\r\nA=1");
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"이름", L"한국", kFile));
  EXPECT_EQ(m_machine.Read(kFile),
            platform::ToUtf16LeBytes(L"\xFEFF; 설명\r\n[User]\r\nA=1\r\n이름=한국\r\n"));
}

TEST_F(Profile, AWriteWithoutAFolderLeavesNothing) {
  constexpr wchar_t kNowhere[] = L"C:\\SigilTest\\Absent\\Some.ini";
  EXPECT_FALSE(WritePrivateProfileStringW(L"User", L"A", L"1", kNowhere));
  EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_EQ(m_machine.Read(kNowhere), "");
}

}  // namespace
}  // namespace tests
