#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

int Update(int reset) {
  const std::wstring policy = Policy(1, nullptr, {{L"E", {{L"Text", L"{WinUser}"}}}});
  return SigilSettingUpdateWaterMarkSetting(0, 1, L"", policy.c_str(), reset);
}

/// The lines that tell how the name was found, and the text it went into.
void ExpectNames(const std::string& expected,
                 std::source_location where = std::source_location::current()) {
  ExpectLinesWith({"FullName", "SetText(\"", "SigilSettingUpdateWaterMarkSetting \""}, expected,
                  where);
}

const std::string kPath = R"(
2 153100906 SigilSettingManagement::PrepareUserFullName "ユーザ情報ファイルパス【C:\SigilTest\UserInfoWM.ini】"
)";

const std::string kSkipped = R"(
2 153100909 SigilSettingManagement::PrepareUserFullName "ユーザフルネーム取得済みのため、スキップ"
)";

const std::string kFound = R"(
2 153100700 SigilSettingManagement::GetUserFullName "取得したユーザ名：【tanaka】"
3 153100390 SigilSettingManagement::GetUserFullName "ユーザ名称取得成功【田中 太郎】"
2 153100902 SigilSettingManagement::PrepareUserFullName "ユーザフルネームを使用しました"
)";

const std::string kLost = R"(
2 153100700 SigilSettingManagement::GetUserFullName "取得したユーザ名：【tanaka】"
4 153100350 SigilSettingManagement::GetUserFullName "ユーザ名称取得失敗　エラーステータス[2221]"
4 153100720 SigilSettingManagement::GetUserFullName "ユーザ名称取得失敗　処理結果=0"
)";

const std::string kFullName = R"(
1 153100951 SigilSettingManagement::GetUserFullName "Winユーザフルネームあり"
2 153100954 SigilSettingManagement::GetUserFullName "取得ネーム：田中 太郎"
Watermark[W1]::SetText("田中 太郎")
)";

const std::string kLoginGiven = R"(
2 153100954 SigilSettingManagement::GetUserFullName "取得ネーム：tanaka"
Watermark[W1]::SetText("tanaka")
)";

const std::string kDone = R"(
3 153000090 SigilSettingUpdateWaterMarkSetting "透かし設定更新処理が完了しました。"
)";

const std::string kStillToFind = R"(
4 153000081 SigilSettingUpdateWaterMarkSetting "フルネーム未取得状態"
)";

class FullName : public testing::Test {
 protected:
  void SetUp() override {
    if (!platform::kHasFaults) GTEST_SKIP() << "the machine's accounts are its own";
  }
  /// Forgets what was recorded; the machine stays.
  static void Again() {
    RecorderReset();
    RecorderSetState(L"setting folder", kSettingFolder);
  }

  TestMachine m_machine;
};

TEST_F(FullName, IsLookedUpOnceAndKeptOverAFailedLookup) {
  EXPECT_EQ(Update(0), 0);
  ExpectNames(kPath + kFound + kFullName + kDone);

  Again();
  EXPECT_EQ(Update(0), 0);
  ExpectNames(kPath + kSkipped + kFullName + kDone);

  for (int reset : {1, 0}) {
    Again();
    platform::SetFault("NetUserGetInfo", 0, 2221);
    EXPECT_EQ(Update(reset), -99);
    EXPECT_NE(m_machine.Read(kUserInfo).find("GetUserState=0"), std::string::npos);
    ExpectNames(kPath + kLost + R"(
2 153100903 SigilSettingManagement::PrepareUserFullName "キャッシュユーザフルネームを使用しました"
)" + kFullName + kStillToFind);
  }

  Again();
  platform::ClearFaults();
  EXPECT_EQ(Update(0), 0);
  ExpectNames(kPath + kFound + kFullName + kDone);
}

TEST_F(FullName, IsObtainedWithAnyStateButZero) {
  m_machine.WriteProfile(kUserInfo, L"[User]\r\nGetUserState=7\r\nUserFullName=田中 太郎\r\n");
  EXPECT_EQ(Update(0), 0);
  ExpectNames(kPath + kSkipped + kFullName + kDone);
}

TEST_F(FullName, GivesWayToTheLoginName) {
  platform::SetFault("NetUserGetInfo", 0, 2221);
  EXPECT_EQ(Update(0), -99);
  ExpectNames(kPath + kLost + R"(
4 153100901 SigilSettingManagement::PrepareUserFullName "ユーザフルネーム失敗したためユーザID使用しました"
1 153100952 SigilSettingManagement::GetUserFullName "Winユーザフルネームなし／loginID設定①"
)" + kLoginGiven +
              kStillToFind);
}

TEST_F(FullName, IsNotStoredWithoutAFolder) {
  for (const wchar_t* call :
       {L"Settings::GetSettingFileDir(buffer, 13)", L"Settings::GetSettingFileDir"}) {
    Again();
    RecorderScript(call, 0, -1);
    EXPECT_EQ(Update(1), -99);
    ExpectNames(R"(
5 153100904 SigilSettingManagement::PrepareUserFullName "設定フォルダパス取得に失敗しました"
)" + kFound + R"(
1 153100953 SigilSettingManagement::GetUserFullName "Winユーザフルネームなし／loginID設定②"
)" + kLoginGiven +
                kStillToFind);
  }
}

TEST_F(FullName, IsDoneWithoutWhereNoInstanceIsGiven) {
  for (unsigned call : {1U, 2U, 4U, 5U}) RecorderScript(L"SigilCreateInstance(Settings)", call, -1);
  EXPECT_EQ(Update(1), -99);
  ExpectNames(R"(
5 153100907 SigilSettingManagement::InitializeFullNameState "Sigilインスタンス取得に失敗したため、ユーザフルネーム取得状態初期化処理を中断"
5 153100907 SigilSettingManagement::PrepareUserFullName "Sigilインスタンス取得に失敗したため、Winユーザフルネーム取得処理を中断"
5 153100907 SigilSettingManagement::GetUserFullName "Sigilインスタンス取得に失敗したため、INIファイル情報取得処理を中断"
Watermark[W1]::SetText("")
5 153100951 SigilSettingManagement::GetFullNameState *
)" + kStillToFind);
}

TEST_F(FullName, SurvivesAComponentThatThrows) {
  RecorderScriptThrow(L"Settings::GetSettingFileDir", 0);
  EXPECT_EQ(Update(1), -99);
  ExpectNames(R"(
5 153100950 SigilSettingManagement::InitializeFullNameState " ユーザフルネーム取得状態初期化に失敗しました"
5 153100908 SigilSettingManagement::PrepareUserFullName "ユーザフルネーム取得に失敗しました"
5 153100950 SigilSettingManagement::GetUserFullName " Winユーザフルネーム取得に失敗しました"
Watermark[W1]::SetText("")
5 153100952 SigilSettingManagement::GetFullNameState *
)" + kStillToFind);
}

}  // namespace
}  // namespace tests
