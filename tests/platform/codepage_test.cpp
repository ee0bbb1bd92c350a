// Text between its forms: UTF-8, UTF-16 and the Japanese code page.

#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/utf.h"

namespace {

using platform::FromUtf8;
using platform::ToUtf8;

TEST(Utf, EveryCodePointGoesThereAndBack) {
  std::wstring text;
  for (unsigned code = 0; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    std::wstring units(1, static_cast<wchar_t>(code));
    if (code > 0xFFFF)
      units = {static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)),
               static_cast<wchar_t>(0xDC00 + (code & 0x3FF))};
    const std::string bytes = ToUtf8(units);
    ASSERT_EQ(bytes.size(), code < 0x80 ? 1U : code < 0x800 ? 2U : code < 0x10000 ? 3U : 4U);
    ASSERT_EQ(FromUtf8(bytes), units) << code;
    text += units;
  }
  text += L'\xD800';  // half a character, which only UTF-16 keeps
  EXPECT_EQ(platform::FromUtf16LeBytes(platform::ToUtf16LeBytes(text)), text);
  EXPECT_TRUE(ToUtf8(text).ends_with("\xF4\x8F\xBF\xBF\xEF\xBF\xBD"));
  EXPECT_EQ(platform::FromUtf16LeBytes("A"), L"\xFFFD");
}

// The tables of the Unicode Standard on U+FFFD for maximal subparts, and the ends of every range;
// U+FFFD is shown as a question mark.
TEST(Utf, EachMaximalIllFormedPartIsReplaced) {
  using Row = std::pair<std::string, std::wstring>;
  for (const auto& [bytes, shown] :
       {Row("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", L"????????A"),
        Row("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", L"????????A"),
        Row("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", L"?????A??B"),
        Row("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", L"????A"), Row("1234567\xE4\xBC", L"1234567?"),
        Row("\xC1\xBF\xF5\xE0\x9F\xEE\x80\xF0\x8F", L"????????")}) {
    std::wstring text = shown;
    std::ranges::replace(text, L'?', L'\xFFFD');
    EXPECT_EQ(FromUtf8(bytes), text);
    for (std::size_t capacity = 0; capacity <= text.size(); ++capacity) {
      std::wstring target(capacity + 1, L'#');
      EXPECT_EQ(platform::DecodeUtf8(bytes, target.data(), capacity), text.size());
      EXPECT_EQ(target, text.substr(0, capacity) + L'#');
    }
  }
}

/// The conversions by the Japanese code page, with the size asked first.
std::wstring ToWide(const std::string& bytes) {
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'#');
  const int units = MultiByteToWideChar(932, 0, bytes.data(), size, nullptr, 0);
  EXPECT_EQ(MultiByteToWideChar(932, 0, bytes.data(), size, text.data(), units), units);
  return text.substr(0, static_cast<std::size_t>(units));
}

std::string ToBytes(const std::wstring& text) {
  const int length = static_cast<int>(text.size());
  std::string bytes(2 * text.size(), '#');
  const int size = WideCharToMultiByte(932, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  WideCharToMultiByte(932, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
  return bytes.substr(0, static_cast<std::size_t>(size));
}

TEST(CodePage, EveryJapaneseCharacterComesBack) {
  EXPECT_EQ(ToWide("A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\x80\xA0\xFD"),
            L"A\\~ｱ会～ⅰ\xE000\x0080\xF8F0\xF8F1");
  EXPECT_EQ(ToBytes(L"A\\~ｱ会～ⅰ\xE000\xF8F0\x0E01z"),
            "A\\~\xB1\x89\xEF\x81\x60\xFA\x40\xF0\x40\xA0?z");
  EXPECT_EQ(ToWide(std::string("\x85\x40\x82\0a\x89", 6)), std::wstring(L"・・\0a・", 5));
  int characters = 0;
  for (int lead = 0x81; lead <= 0xFC; ++lead)
    for (int trail = 0x40; trail <= 0xFC; ++trail) {
      if (lead >= 0xA0 && lead < 0xE0) continue;
      const std::wstring text = ToWide({static_cast<char>(lead), static_cast<char>(trail)});
      if (text.size() != 1 || text == L"・") continue;
      ++characters;
      ASSERT_EQ(ToWide(ToBytes(text)), text) << lead << ' ' << trail;
    }
  // 6879 of JIS X 0208 less the one that replaces, 83 of NEC row 13, 374 and 388 extensions of NEC
  // and IBM, 1880 places for the user's own.
  EXPECT_EQ(characters, 6878 + 83 + 374 + 388 + 1880);
}

}  // namespace
