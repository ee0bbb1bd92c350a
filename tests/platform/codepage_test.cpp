#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace {

/// The conversion with the size asked first; "failed N" for the last error N.
std::wstring ToWide(UINT codePage, const std::string& bytes, DWORD flags = 0) {
  const int size = static_cast<int>(bytes.size());
  const int units = MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0);
  if (units == 0) return L"failed " + std::to_wstring(GetLastError());
  std::wstring text(static_cast<std::size_t>(units), L'#');
  EXPECT_EQ(MultiByteToWideChar(codePage, flags, bytes.data(), size, text.data(), units), units);
  return text;
}

std::string ToBytes(UINT codePage, const std::wstring& text, DWORD flags = 0,
                    LPCSTR defaultChar = nullptr, BOOL* used = nullptr) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(codePage, flags, text.data(), length, nullptr, 0, defaultChar, used);
  if (size == 0) return "failed " + std::to_string(GetLastError());
  std::string bytes(static_cast<std::size_t>(size), '#');
  EXPECT_EQ(WideCharToMultiByte(codePage, flags, text.data(), length, bytes.data(), size,
                                defaultChar, used),
            size);
  return bytes;
}

constexpr UINT kJapanese = 932;

TEST(CodePage, Utf8ReplacesWhatIsIllFormedOrRefusesIt) {
  EXPECT_EQ(ToWide(CP_UTF8, "a\xE4\xBC\x9A\xF0\x9F\x98\x80"), L"a会" + platform::FromUtf8("😀"));
  EXPECT_EQ(ToWide(CP_UTF8,
                   "\xE4\xBC"
                   "a\xFF"),
            L"\xFFFD"
            L"a\xFFFD");
  EXPECT_EQ(ToWide(CP_UTF8,
                   "\xE4\xBC"
                   "a",
                   MB_ERR_INVALID_CHARS),
            L"failed 1113");
  EXPECT_EQ(ToWide(CP_UTF8, "\xEF\xBF\xBD", MB_ERR_INVALID_CHARS), L"\xFFFD");
  const std::wstring lone = {L'a', static_cast<wchar_t>(0xD800)};
  EXPECT_EQ(ToBytes(CP_UTF8, lone), "a\xEF\xBF\xBD");
  EXPECT_EQ(ToBytes(CP_UTF8, lone, WC_ERR_INVALID_CHARS), "failed 1113");
  EXPECT_EQ(ToBytes(CP_UTF8, L"会", WC_ERR_INVALID_CHARS), "\xE4\xBC\x9A");
  if (tests::IsWine()) return;  // Takes what has no meaning for UTF-8.
  EXPECT_EQ(ToWide(CP_UTF8, "a", MB_PRECOMPOSED), L"failed 1004");
  EXPECT_EQ(ToBytes(CP_UTF8, L"a", 0, "?"), "failed 87");
}

TEST(CodePage, JapaneseHasSingleAndDoubleBytes) {
  EXPECT_EQ(ToWide(kJapanese, "A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\x80\xA0\xFD"),
            L"A\\~ｱ会～ⅰ\xE000\x0080\xF8F0\xF8F1");
  EXPECT_EQ(ToBytes(kJapanese, L"A\\~ｱ会～ⅰ\xE000\xF8F0"),
            "A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\xA0");
  EXPECT_EQ(ToWide(kJapanese, std::string("\x85\x40\x82\0a\x89", 6)),
            std::wstring(L"・・\0a・", 5));
  EXPECT_EQ(ToWide(kJapanese, "\x81\x45", MB_ERR_INVALID_CHARS), L"・");
  EXPECT_EQ(ToWide(kJapanese, "\x85\x40", MB_ERR_INVALID_CHARS), L"failed 1113");
  BOOL used = TRUE;
  EXPECT_EQ(ToBytes(kJapanese, L"会", 0, nullptr, &used), "\x89\xEF");
  EXPECT_FALSE(used);
  EXPECT_EQ(ToBytes(kJapanese, L"a\x0E01z", 0, nullptr, &used), "a?z");
  EXPECT_TRUE(used);
  EXPECT_EQ(ToBytes(kJapanese, L"\x0E01", 0, "#"), "#");
}

TEST(CodePage, EveryJapaneseCharacterComesBack) {
  int characters = 0;
  for (int lead = 0x81; lead <= 0xFC; ++lead)
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      if (lead >= 0xA0 && lead < 0xE0) continue;
      const std::string bytes = {static_cast<char>(lead), static_cast<char>(trail)};
      const std::wstring text = ToWide(kJapanese, bytes, MB_ERR_INVALID_CHARS);
      if (text.size() != 1) continue;
      ++characters;
      ASSERT_EQ(ToWide(kJapanese, ToBytes(kJapanese, text)), text) << lead << ' ' << trail;
    }
  // 6879 of JIS X 0208, 83 of NEC row 13, 374 and 388 extensions of NEC and IBM, 1880 places for
  // the user's own.
  EXPECT_EQ(characters, 6879 + 83 + 374 + 388 + 1880);
}

TEST(CodePage, SizesAndArgumentsAreChecked) {
  for (const UINT codePage : {UINT{CP_UTF8}, kJapanese}) {
    wchar_t text[4] = {L'#', L'#', L'#', L'#'};
    char bytes[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "ab", -1, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(codePage, 0, "ab", -1, text, 4), 3);
    EXPECT_STREQ(text, L"ab");
    EXPECT_EQ(text[3], L'#');
    EXPECT_EQ(WideCharToMultiByte(codePage, 0, L"ab", -1, bytes, 3, nullptr, nullptr), 3);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_EQ(bytes[3], '#');

    const auto expectError = [](int result, DWORD error) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(GetLastError(), error);
      SetLastError(0);
    };
    expectError(MultiByteToWideChar(codePage, 0, "abcd", -1, text, 4), ERROR_INSUFFICIENT_BUFFER);
    expectError(WideCharToMultiByte(codePage, 0, L"abcd", 4, bytes, 3, nullptr, nullptr),
                ERROR_INSUFFICIENT_BUFFER);
    expectError(MultiByteToWideChar(codePage, 0, "ab", 0, text, 4), ERROR_INVALID_PARAMETER);
    expectError(MultiByteToWideChar(codePage, 0, nullptr, -1, text, 4), ERROR_INVALID_PARAMETER);
    expectError(MultiByteToWideChar(codePage, 0, "ab", 2, nullptr, 4), ERROR_INVALID_PARAMETER);
    expectError(WideCharToMultiByte(codePage, 0, L"ab", 2, bytes, -1, nullptr, nullptr),
                ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(MultiByteToWideChar(4711, 0, "a", 1, nullptr, 0), 0);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
