#include "platform/crt.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "tests/support/test_machine.h"

namespace {

TEST(Crt, IntegersReadAsDocumented) {
  const struct {
    std::wstring text;
    int value;
  } cases[] = {
      {L"", 0},
      {L"word", 0},
      {L"12abc", 12},
      {L"  \t\n\v\f\r42", 42},
      {L"\x3000\x00A0\x2003\x0085-7", -7},
      {L"+5", 5},
      {L"+-5", 0},
      {L"- 5", 0},
      {L"-0", 0},
      {L"010", 10},
      {L"0x10", 0},
      {L"1,000", 1},
      {L"1.9", 1},
      {L"2147483647", INT_MAX},
      {L"2147483648", INT_MAX},
      {L"-2147483648", INT_MIN},
      {L"-2147483649", INT_MIN},
      {L"99999999999999999999999999", INT_MAX},
      {L"-99999999999999999999999999", INT_MIN},
      {L"\xFF11\xFF12", 12},
      {L"-\x0663\x0967", -31},
      {L"\xFF21", 0},
      {std::wstring(300, L'0') + L"8", 8},
  };
  for (const auto& each : cases) {
    // Wine takes this unit for no white space.
    if (tests::IsWine() && each.text.find(L'\x85') != std::wstring::npos) continue;
    EXPECT_EQ(_wtoi(each.text.c_str()), each.value) << each.value;
  }
}

TEST(Crt, IntegersInAnyBaseEndWhereTheyEnd) {
  const struct {
    const wchar_t* text;
    int base;
    long value;
    int end;
    int error;
  } cases[] = {
      {L"0xFF0000", 16, 0xFF0000, 8, 0},
      {L"FfZ", 16, 255, 2, 0},
      {L"0Xg", 16, 0, 0, 0},
      {L"0xg", 0, 0, 0, 0},
      {L"0x7FFFFFFF", 16, INT_MAX, 10, 0},
      {L"0xFFFFFFFF", 16, INT_MAX, 10, ERANGE},
      {L"-0x80000000", 16, INT_MIN, 11, 0},
      {L"-0xFFFFFFFFFFFFFFFFFFFF!", 16, INT_MIN, 23, ERANGE},
      {L" 0x1F", 0, 31, 5, 0},
      {L"017", 0, 15, 3, 0},
      {L"08", 0, 0, 1, 0},
      {L"17", 0, 17, 2, 0},
      {L"zZ", 36, 35 * 37, 2, 0},
      {L"102", 2, 2, 2, 0},
      {L"  +", 10, 0, 0, 0},
      {L"\xFF10x1\xFF11", 16, 17, 4, 0},
  };
  for (const auto& each : cases) {
    wchar_t* end = nullptr;
    errno = 0;
    EXPECT_EQ(crt::wcstol(each.text, &end, each.base), each.value);
    EXPECT_EQ(end - each.text, each.end) << each.value;
    EXPECT_EQ(errno, each.error) << each.value;
  }
}

TEST(Crt, RealsReadAsDocumented) {
  const struct {
    std::wstring text;
    double value;
  } cases[] = {
      {L"", 0.0},
      {L"word", 0.0},
      {L".", 0.0},
      {L"-.e5", 0.0},
      {L" \x3000 0.5mm", 0.5},
      {L"-1000.5", -1000.5},
      {L"+.25", 0.25},
      {L"7.", 7.0},
      {L"1,5", 1.0},
      {L"1e2", 100.0},
      {L"1E+2", 100.0},
      {L"1d2", 100.0},
      {L"1D-2", 0.01},
      {L"3e", 3.0},
      {L"3e+", 3.0},
      {L"3 e2", 3.0},
      {L"0x10", 0.0},
      {L"inf", 0.0},
      {L"nan", 0.0},
      {L"1e999", HUGE_VAL},
      {L"-1e999", -HUGE_VAL},
      {L"1e99999999999999999999", HUGE_VAL},
      {L"1e-99999999999999999999", 0.0},
      {L"0e99999999999999999999", 0.0},
      {L"0." + std::wstring(1000, L'0') + L"1e1001", 1.0},
      {std::wstring(200000, L'9') + L"e-199999", 10.0},
      {L"9007199254740993", 9007199254740992.0},
      {L"2.2250738585072011e-308", 0x0.fffffffffffffp-1022},
  };
  for (const auto& each : cases) EXPECT_EQ(_wtof(each.text.c_str()), each.value) << each.value;
  EXPECT_TRUE(std::signbit(_wtof(L"-0.0")));
}

TEST(Crt, RealsAreCorrectlyRounded) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value);
    ASSERT_EQ(_wtof(std::wstring(text, text + std::strlen(text)).c_str()), value) << text;
  }
}

#ifndef _WIN32
TEST(Crt, NoPointerIsNoNumberAndNoFile) {
  EXPECT_EQ(_wtoi(nullptr), 0);
  EXPECT_EQ(_wtof(nullptr), 0.0);
  EXPECT_EQ(crt::wcstol(nullptr, nullptr, 10), 0);
  EXPECT_EQ(crt::wcstol(L"1", nullptr, 37), 0);
  std::FILE* file = stdout;
  EXPECT_EQ(_wfopen_s(&file, nullptr, L"rb"), EINVAL);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(_wfopen_s(nullptr, L"C:\\x", L"rb"), EINVAL);
  EXPECT_EQ(_wfopen_s(&file, L"C:\\x", L"w"), EINVAL);
}
#endif

}  // namespace
