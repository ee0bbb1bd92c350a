#include "platform/crt.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <random>
#include <string>
#include <tuple>

namespace {

TEST(Crt, IntegersReadAsDocumented) {
  using Row = std::pair<std::wstring, int>;
  for (const auto& [text, value] :
       {Row(L"", 0), Row(L"word", 0), Row(L"12abc", 12), Row(L" \t\n\v\f\r42", 42),
        Row(L"\x3000\xA0\x2003-7", -7), Row(L"+5", 5), Row(L"+-5", 0), Row(L"- 5", 0),
        Row(L"010", 10), Row(L"0x10", 0), Row(L"1.9", 1), Row(L"2147483648", INT_MAX),
        Row(L"-2147483648", INT_MIN), Row(L"-2147483649", INT_MIN), Row(L"\xFF11\xFF12", 12),
        Row(L"-99999999999999999999", INT_MIN), Row(L"-\x0663\x0967", -31), Row(L"\xFF21", 0)})
    EXPECT_EQ(_wtoi(text.c_str()), value) << value;
}

TEST(Crt, IntegersInAnyBaseEndWhereTheyEnd) {
  using Row = std::tuple<const wchar_t*, int, long, int, int>;
  for (const auto& [text, base, value, length, error] :
       {Row(L"0xFF0000", 16, 0xFF0000, 8, 0), Row(L"FfZ", 16, 255, 2, 0), Row(L"0Xg", 16, 0, 0, 0),
        Row(L"0x7FFFFFFF", 16, INT_MAX, 10, 0), Row(L"0xFFFFFFFF", 16, INT_MAX, 10, ERANGE),
        Row(L"-0x80000000", 16, INT_MIN, 11, 0), Row(L"-0xFFFFFFFFF!", 16, INT_MIN, 12, ERANGE),
        Row(L"  +", 10, 0, 0, 0), Row(L"\xFF10x1\xFF11", 16, 17, 4, 0)}) {
    wchar_t* end = nullptr;
    errno = 0;
    EXPECT_EQ(crt::wcstol(text, &end, base), value);
    EXPECT_EQ(end - text, length) << value;
    EXPECT_EQ(errno, error) << value;
  }
}

TEST(Crt, RealsReadAsDocumented) {
  using Row = std::pair<const wchar_t*, double>;
  for (const auto& [text, value] :
       {Row(L"", 0.0), Row(L"word", 0.0), Row(L"-.e5", 0.0), Row(L" \x3000 0.5mm", 0.5),
        Row(L"-1000.5", -1000.5), Row(L"+.25", 0.25), Row(L"7.", 7.0), Row(L"1,5", 1.0),
        Row(L"1E+2", 100.0), Row(L"1d2", 100.0), Row(L"1D-2", 0.01), Row(L"3e+", 3.0),
        Row(L"3 e2", 3.0), Row(L"0x10", 0.0), Row(L"inf", 0.0), Row(L"nan", 0.0),
        Row(L"-1e999", -HUGE_VAL), Row(L"1e99999999999999999999", HUGE_VAL),
        Row(L"1e-99999999999999999999", 0.0)})
    EXPECT_EQ(_wtof(text), value) << value;
  EXPECT_EQ(_wtof((std::wstring(200000, L'9') + L"e-199999").c_str()), 10.0);
  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%.17g", value);
    ASSERT_EQ(_wtof(std::wstring(text, text + length).c_str()), value) << text;
  }
}

}  // namespace
