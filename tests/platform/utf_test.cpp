#include "platform/utf.h"

#include <gtest/gtest.h>

namespace {

using platform::DecodeUtf8;
using platform::FromUtf16LeBytes;
using platform::FromUtf8;
using platform::ToUtf16LeBytes;
using platform::ToUtf8;

std::wstring Units(std::initializer_list<unsigned> units) {
  std::wstring text;
  for (const unsigned unit : units) text.push_back(static_cast<wchar_t>(unit));
  return text;
}

TEST(Utf, EveryCodePointGoesThereAndBack) {
  std::wstring text;
  std::string expected;
  for (unsigned code = 0; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    const std::wstring units =
        code < 0x10000
            ? Units({code})
            : Units({0xD800 + ((code - 0x10000) >> 10), 0xDC00 + ((code - 0x10000) & 0x3FF)});
    const std::string bytes = ToUtf8(units);
    ASSERT_EQ(bytes.size(), code < 0x80 ? 1U : code < 0x800 ? 2U : code < 0x10000 ? 3U : 4U);
    ASSERT_EQ(FromUtf8(bytes), units) << code;
    text += units;
    expected += bytes;
  }
  EXPECT_EQ(ToUtf8(text), expected);
  EXPECT_EQ(FromUtf8(expected), text);
  EXPECT_EQ(FromUtf16LeBytes(ToUtf16LeBytes(text)), text);
  EXPECT_EQ(ToUtf8(L"Aé会\U0001F600"), "A\xC3\xA9\xE4\xBC\x9A\xF0\x9F\x98\x80");
}

// The tables of the Unicode Standard on U+FFFD for maximal subparts, and the ends of every range.
TEST(Utf, EachMaximalIllFormedPartIsReplaced) {
  const struct {
    std::string bytes;
    std::wstring text;
  } cases[] = {
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
       Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41})},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
       Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41})},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
       Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41, 0xFFFD, 0xFFFD, 0x42})},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41})},
      {"\xC1\xBF\xF5\xE0\x9F\xEE\x80\xF0\x8F",
       Units({0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD})},
      {"12345678\xE4\xBC", L"12345678\xFFFD"},
      {std::string("a\0\xC3\xA9", 4), std::wstring(L"a\0é", 3)},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(FromUtf8(each.bytes), each.text);
    for (std::size_t capacity = 0; capacity <= each.text.size(); ++capacity) {
      std::wstring target(capacity + 1, L'#');
      EXPECT_EQ(DecodeUtf8(each.bytes, target.data(), capacity), each.text.size());
      EXPECT_EQ(target, each.text.substr(0, capacity) + L'#');
    }
  }
}

TEST(Utf, WhatHasNoOtherFormIsReplacedOrKept) {
  const std::wstring lone = Units({0xD800, 0x41, 0xDFFF, 0xD801});
  EXPECT_EQ(ToUtf8(lone), "\xEF\xBF\xBD\x41\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf16LeBytes(lone), std::string("\x00\xD8\x41\x00\xFF\xDF\x01\xD8", 8));
  EXPECT_EQ(FromUtf16LeBytes(ToUtf16LeBytes(lone)), lone);
  EXPECT_EQ(FromUtf16LeBytes("A"), Units({0xFFFD}));
  if constexpr (sizeof(wchar_t) > 2) {
    EXPECT_EQ(ToUtf8(Units({0x1F600, 0x110000})), "\xF0\x9F\x98\x80\xEF\xBF\xBD");
    EXPECT_EQ(ToUtf16LeBytes(Units({0x1F600})), std::string("\x3D\xD8\x00\xDE", 4));
  }
}

}  // namespace
