// What a caller gets of the user's name when an exception ends the work; tests/management tells
// the rest by the text of watermarks.

#include <gtest/gtest.h>

#include "host/user_information.h"
#include "platform/utf.h"
#include "tests/support/causes.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

using namespace SigilSettingManagement;

TEST(UserInformation, AnExceptionLeavesWhatWasReached) {
  const std::string notWritten = "WritePrivateProfileStringW throws";
  const std::string noFolder = "call 1 of Settings::GetSettingFileDir throws";
  const struct {
    bool (*run)(CString&);
    std::string causes;
    bool result;
    const char* name;
  } cases[] = {
      {PrepareUserFullName, noFolder, false, "before"},
      {PrepareUserFullName, notWritten, true, "田中 太郎"},
      {PrepareUserFullName, "NetUserGetInfo fails with 2221 and " + notWritten, false, "tanaka"},
      {GetUserFullName, noFolder, false, ""},
      {GetUserFullName, "call 1 of SigilCreateInstance throws", false, ""}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.causes);
    TestMachine machine;
    Arrange(test.causes);
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
