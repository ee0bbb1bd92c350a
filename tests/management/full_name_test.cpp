#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "tests/recorder/recorder.h"
#include "tests/support/causes.h"
#include "tests/support/policy.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {
namespace {

class FullName : public testing::Test {
 protected:
  /// An update gives `result` and tells of the name what the section says. What was recorded is
  /// forgotten then; the machine stays.
  void ExpectUpdate(int reset, int result, const char* section) {
    SCOPED_TRACE(section);
    const std::wstring policy = Policy(1, nullptr, {{L"E", {{L"Text", L"{WinUser}"}}}});
    EXPECT_EQ(SigilSettingUpdateWaterMarkSetting(0, 1, L"", policy.c_str(), reset), result);
    ExpectLinesWith({"FullName", "SetText(\"", "SigilSettingUpdateWaterMarkSetting \""},
                    m_told(section));
    RecorderReset();
    RecorderSetState(L"setting folder", kSettingFolder);
  }

  const Transcript m_told{{"management/transcripts/full_name"}};
  TestMachine m_machine;
};

class FullNameOfAnAccount : public FullName {
  void SetUp() override {
    if (!platform::kHasFaults) GTEST_SKIP() << "Wine's account has no full name";
  }
};

TEST_F(FullNameOfAnAccount, IsLookedUpOnceAndKeptOverAFailedLookup) {
  ExpectUpdate(0, 0, "looked up");
  ExpectUpdate(0, 0, "skipped");
  for (int reset : {1, 0}) {
    platform::SetFault("NetUserGetInfo", 0, 2221);
    ExpectUpdate(reset, -99, "kept");
    EXPECT_NE(m_machine.Read(kUserInfo).find("GetUserState=0"), std::string::npos);
  }
  platform::ClearFaults();
  ExpectUpdate(0, 0, "looked up");
}

TEST_F(FullName, IsObtainedWithAnyStateButZero) {
  m_machine.WriteProfile(kUserInfo, L"[User]\r\nGetUserState=7\r\nUserFullName=田中 太郎\r\n");
  ExpectUpdate(0, 0, "skipped");
}

TEST_F(FullName, GivesWayToTheLoginName) {
  platform::SetFault("NetUserGetInfo", 0, 2221);
  ExpectUpdate(0, -99, platform::kHasFaults ? "login instead" : "login instead of no name");
}

TEST_F(FullNameOfAnAccount, IsDoneWithoutWhereTheComponentFails) {
  const std::pair<const char*, const char*> cases[] = {
      {"no folder", "each call of Settings::GetSettingFileDir(buffer, 13) gives -1"},
      {"no folder", "each call of Settings::GetSettingFileDir gives -1"},
      {"no instance",
       "call 1 of SigilCreateInstance(Settings) gives -1 and call 2 of "
       "SigilCreateInstance(Settings)"
       " gives -1 and call 4 of SigilCreateInstance(Settings) gives -1 and call 5 of"
       " SigilCreateInstance(Settings) gives -1"},
      {"component that throws", "each call of Settings::GetSettingFileDir throws"}};
  for (const auto& [section, causes] : cases) {
    Arrange(causes);
    ExpectUpdate(1, -99, section);
  }
}

}  // namespace
}  // namespace tests
