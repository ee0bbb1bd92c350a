// What a caller gets of the user's name when an exception ends the work; tests/management tells
// the rest by the text of watermarks.

#include <gtest/gtest.h>

#include "host/user_information.h"
#include "platform/utf.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

using namespace SigilSettingManagement;

TEST(UserInformation, AnExceptionLeavesWhatWasReached) {
  const Twist notWritten = Fault("WritePrivateProfileStringW", 0, platform::kThrows);
  const Twist notLookedUp = Fault("NetUserGetInfo", 0, 2221);
  const Twists noFolder = Throws(L"Settings::GetSettingFileDir");
  const struct {
    bool (*run)(CString&);
    Twists twists;
    bool result;
    const char* name;
  } cases[] = {{PrepareUserFullName, noFolder, false, "before"},
               {PrepareUserFullName, notWritten, true, "田中 太郎"},
               {PrepareUserFullName, notLookedUp + notWritten, false, "tanaka"},
               {GetUserFullName, noFolder, false, ""},
               {GetUserFullName, Throws(L"SigilCreateInstance"), false, ""}};
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    TestMachine machine;
    Apply(test.twists);
    CString name = L"before";
    EXPECT_EQ(test.run(name), test.result);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(name)), test.name);
    const bool prepares = test.run == PrepareUserFullName;
    ExpectLinesWith({"153100908", "153100950"},
                    prepares ? R"(5 153100908 SigilSettingManagement::PrepareUserFullName *)"
                             : R"(5 153100950 SigilSettingManagement::GetUserFullName *)");
  }
}

}  // namespace
}  // namespace tests
