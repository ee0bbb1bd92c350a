#include <gtest/gtest.h>

#include <fstream>

#include "host/full_name_lookup.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"
#include "tests/support/causes.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {
namespace {

TEST(FullNameLookup, AsksTheControllerFirstAndTheMachineAfterIt) {
  const std::string local = "[Accounts]\ntanaka=田中 太郎\n";
  const std::string domain = "Joined=1\nDomain=HARBOR\n" + local;
  const std::string there = "Controller=\\\\DC01\n" + local + "[Accounts \\\\DC01]\n";
  const std::string joined = "Joined=1\nDomain=HARBOR\n" + there;
  const std::string lost = "NetUserGetInfo fails with 2221";
  const struct {
    std::string machine;
    std::string causes;
    const char* section;
    bool result;
    const char *fullName, *controller;
  } cases[] = {
      {local, "", "machine found", true, "田中 太郎", ""},
      {"[Accounts]\ntanaka=\n", "", "machine without name", true, "", ""},
      {local, lost, "machine lost", false, "", ""},
      {local, "NetUserGetInfo fails with 0", "machine gives nothing", false, "", ""},
      {local, "NetUserGetInfo throws", "exception", false, "", ""},
      {joined + "tanaka=本店 太郎\n", "", "controller found", true, "本店 太郎", "\\\\DC01"},
      {joined + "tanaka=\n", "", "controller without name", true, "", "\\\\DC01"},
      // A server and a login name are found in any case, and without the server's backslashes.
      {"joined=1\nDOMAIN=HARBOR\nController=DC01\n[Accounts]\n[accounts dc01]\nTanaka=本店\n", "",
       "controller found", true, "本店", "\\\\DC01"},
      {joined + "tanaka\n", "", "controller found", true, "田中 太郎", ""},
      {joined + "tanaka\n", "NetUserGetInfo fails after 1 with 2221", "controller with a null name",
       false, "", ""},
      {joined + "suzuki=鈴木\n", "", "controller found", true, "田中 太郎", ""},
      {joined, lost, "controller lost", false, "", ""},
      {joined, "NetUserGetInfo fails with 0", "controller gives nothing", false, "", ""},
      {joined + "tanaka=本店 太郎\n", "NetWkstaGetInfo fails with 0", "controller found", true,
       "本店 太郎", "\\\\DC01"},
      // The group's name as it was read, cut to the buffer, is asked for: nobody controls that.
      {"Joined=1\nDomain=" + std::string(255, 'H') + "\n" + there + "tanaka=本店 太郎\n", "",
       "controller found", true, "本店 太郎", "\\\\DC01"},
      {"Joined=1\nDomain=" + std::string(256, 'H') + "\n" + there + "tanaka=本店 太郎\n", "",
       "machine found", true, "田中 太郎", ""},
      {domain, "", "machine found", true, "田中 太郎", ""},
      {domain, lost, "machine lost", false, "", ""},
      {joined + "tanaka=本店 太郎\n", "NetGetJoinInformation fails", "machine found", true,
       "田中 太郎", ""}};
  const Transcript told({"host/transcripts/host"});
  for (const auto& test : cases) {
    SCOPED_TRACE(test.machine);
    TestMachine machine;
    std::ofstream(platform::MachineRoot() / "machine.ini")
        << "[Machine]\nUser=tanaka\n" + test.machine;
    if (!test.causes.empty()) Arrange(test.causes);
    CString fullName = L"before", controller = L"before";
    EXPECT_EQ(SigilSettingManagement::GetUserFullName(fullName, controller), test.result);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(fullName)), test.fullName);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(controller)), test.controller);
    ExpectRecord(told(test.section, {test.fullName}));
  }
}

}  // namespace
}  // namespace tests
