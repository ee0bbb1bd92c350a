#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/utf.h"
#include "tests/platform/calls.h"

namespace {

constexpr UINT kJapanese = 932;

/// The conversions with the size asked first.
std::wstring ToWide(UINT codePage, const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  const int units = MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(units), L'#');
  EXPECT_EQ(MultiByteToWideChar(codePage, 0, bytes.data(), size, text.data(), units), units);
  return text;
}

std::string ToBytes(UINT codePage, const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  const int size =
      WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(size), '#');
  EXPECT_EQ(
      WideCharToMultiByte(codePage, 0, text.data(), length, bytes.data(), size, nullptr, nullptr),
      size);
  return bytes;
}

TEST(CodePage, ReplacesWhatHasNoOtherForm) {
  EXPECT_EQ(ToWide(CP_UTF8, "\xE4\xBC!\xFF\xF0\x9F\x98\x80"),
            L"\xFFFD!\xFFFD" + platform::FromUtf8("😀"));
  EXPECT_EQ(ToBytes(CP_UTF8, {L'a', static_cast<wchar_t>(0xD800)}), "a\xEF\xBF\xBD");
  EXPECT_EQ(ToWide(kJapanese, "A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\x80\xA0\xFD"),
            L"A\\~ｱ会～ⅰ\xE000\x0080\xF8F0\xF8F1");
  EXPECT_EQ(ToBytes(kJapanese, L"A\\~ｱ会～ⅰ\xE000\xF8F0\x0E01z"),
            "A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\xA0?z");
  EXPECT_EQ(ToWide(kJapanese, std::string("\x85\x40\x82\0a\x89", 6)),
            std::wstring(L"・・\0a・", 5));
}

TEST(CodePage, EveryJapaneseCharacterComesBack) {
  int characters = 0;
  for (int lead = 0x81; lead <= 0xFC; ++lead)
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      if (lead >= 0xA0 && lead < 0xE0) continue;
      const std::wstring text =
          ToWide(kJapanese, {static_cast<char>(lead), static_cast<char>(trail)});
      if (text.size() != 1 || text == L"・") continue;
      ++characters;
      ASSERT_EQ(ToWide(kJapanese, ToBytes(kJapanese, text)), text) << lead << ' ' << trail;
    }
  // 6879 of JIS X 0208 less the one that replaces, 83 of NEC row 13, 374 and 388 extensions of NEC
  // and IBM, 1880 places for the user's own.
  EXPECT_EQ(characters, 6878 + 83 + 374 + 388 + 1880);
}

TEST(CodePage, SizesAndArgumentsAreChecked) {
  using tests::ErrorOf;
  wchar_t text[4] = L"###";
  char bytes[4] = "###";
  for (const UINT page : {UINT{CP_UTF8}, kJapanese}) {
    EXPECT_EQ(MultiByteToWideChar(page, 0, "ab", -1, text, 4), 3);
    EXPECT_STREQ(text, L"ab");
    EXPECT_EQ(WideCharToMultiByte(page, 0, L"ab", -1, bytes, 3, nullptr, nullptr), 3);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_EQ(ErrorOf(MultiByteToWideChar(page, 0, "abcd", -1, text, 4)),
              ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(ErrorOf(WideCharToMultiByte(page, 0, L"abcd", 4, bytes, 3, nullptr, nullptr)),
              ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(ErrorOf(MultiByteToWideChar(page, 0, "ab", 0, text, 4)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(ErrorOf(MultiByteToWideChar(page, 0, "ab", 2, nullptr, 4)), ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(ErrorOf(MultiByteToWideChar(4711, 0, "a", 1, nullptr, 0)), ERROR_INVALID_PARAMETER);
}

}  // namespace
