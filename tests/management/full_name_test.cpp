#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "tests/recorder/recorder.h"
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

TEST_F(FullNameOfAnAccount, IsNotStoredWithoutAFolder) {
  for (const wchar_t* call :
       {L"Settings::GetSettingFileDir(buffer, 13)", L"Settings::GetSettingFileDir"}) {
    RecorderScript(call, 0, -1);
    ExpectUpdate(1, -99, "no folder");
  }
}

TEST_F(FullNameOfAnAccount, IsDoneWithoutWhereNoInstanceIsGiven) {
  for (unsigned call : {1U, 2U, 4U, 5U}) RecorderScript(L"SigilCreateInstance(Settings)", call, -1);
  ExpectUpdate(1, -99, "no instance");
}

TEST_F(FullNameOfAnAccount, SurvivesAComponentThatThrows) {
  RecorderScriptThrow(L"Settings::GetSettingFileDir", 0);
  ExpectUpdate(1, -99, "component that throws");
}

}  // namespace
}  // namespace tests
