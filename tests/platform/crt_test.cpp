#include "platform/crt.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <string>

namespace {

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
