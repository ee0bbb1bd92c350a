#include "platform/utf.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using platform::FromUtf8;
using platform::ToUtf8;

std::wstring Units(std::initializer_list<unsigned> units) {
  return {units.begin(), units.end()};
}

TEST(Utf, EveryCodePointGoesThereAndBack) {
  std::wstring text;
  for (unsigned code = 0; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    const unsigned rest = code - 0x10000;
    const std::wstring units =
        code < 0x10000 ? Units({code}) : Units({0xD800 + (rest >> 10), 0xDC00 + (rest & 0x3FF)});
    const std::string bytes = ToUtf8(units);
    ASSERT_EQ(bytes.size(), code < 0x80 ? 1U : code < 0x800 ? 2U : code < 0x10000 ? 3U : 4U);
    ASSERT_EQ(FromUtf8(bytes), units) << code;
    text += units;
  }
  EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
  EXPECT_EQ(platform::FromUtf16LeBytes(platform::ToUtf16LeBytes(text)), text);
  EXPECT_EQ(ToUtf8(L"Aé会\U0001F600"), "A\xC3\xA9\xE4\xBC\x9A\xF0\x9F\x98\x80");
}

// The tables of the Unicode Standard on U+FFFD for maximal subparts, and the ends of every range;
// U+FFFD is shown as a question mark.
TEST(Utf, EachMaximalIllFormedPartIsReplaced) {
  using Row = std::pair<std::string, std::wstring>;
  for (const auto& [bytes, shown] :
       {Row("\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", L"????????A"),
        Row("\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", L"????????A"),
        Row("\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", L"?????A??B"),
        Row("\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", L"????A"),
        Row("\xC1\xBF\xF5\xE0\x9F\xEE\x80\xF0\x8F", L"????????"),
        Row("12345678\xE4\xBC", L"12345678?"),
        Row(std::string("a\0\xC3\xA9", 4), std::wstring(L"a\0é", 3))}) {
    std::wstring text = shown;
    std::ranges::replace(text, L'?', L'\xFFFD');
    EXPECT_EQ(FromUtf8(bytes), text);
    for (std::size_t capacity = 0; capacity <= text.size(); ++capacity) {
      std::wstring target(capacity + 1, L'#');
      EXPECT_EQ(platform::DecodeUtf8(bytes, target.data(), capacity), text.size());
      EXPECT_EQ(target, text.substr(0, capacity) + L'#');
    }
  }
  const std::wstring lone = Units({0xD800, 0x41, 0xDFFF, 0xD801});
  EXPECT_EQ(ToUtf8(lone), "\xEF\xBF\xBD\x41\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(platform::FromUtf16LeBytes(platform::ToUtf16LeBytes(lone)), lone);
  EXPECT_EQ(platform::FromUtf16LeBytes("A"), L"\xFFFD");
}

}  // namespace
