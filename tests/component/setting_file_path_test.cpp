#include "component/setting_file_path.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

TEST(SettingFilePath, TellsTheNeededLengthAndCutsWhatDoesNotFit) {
  TestMachine machine;
  const std::wstring path = platform::FromUtf8(SettingFile());
  const auto needed = static_cast<std::uint32_t>(path.size() + 1);
  std::uint32_t length = 0;
  EXPECT_EQ(GetSettingFilePath(nullptr, &length), Sigil::kSuccess);
  EXPECT_EQ(length, needed);
  for (const std::uint32_t capacity : {needed + 100, needed, needed - 1, 2U, 1U, 0U}) {
    std::vector<wchar_t> target(capacity + 1, L'?');
    length = capacity;
    EXPECT_EQ(GetSettingFilePath(target.data(), &length),
              capacity >= needed ? Sigil::kSuccess : Sigil::kTargetTooSmall);
    EXPECT_EQ(length, needed);
    if (capacity > 0) {
      EXPECT_EQ(std::wstring(target.data()), path.substr(0, capacity - 1));
    }
    EXPECT_EQ(target[capacity], L'?');
  }
}

}  // namespace
}  // namespace tests
