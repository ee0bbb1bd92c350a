#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "tests/management/expected.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

const std::string kSet = R"(
Settings::SetUseContentLog($1)
Settings::Commit()
1 153400200 OperationSigilSettings::SetUseContentLog "印刷内容ログ記録コールバック設定。設定値[$1]"
)";

const std::string kDone = R"(
3 153100740 SigilSettingManagement::SetUseContentLog "印刷内容ログ記録コールバック呼び出し有無設定登録完了 設定値[ $1 ]"
component unloaded
3 153000150 SigilSettingSetUseContentLog "印刷内容ログ記録コールバック呼び出し有無設定処理が完了しました。設定値：$1"
)";

const std::string kExportFailed = R"(
5 153000140 SigilSettingSetUseContentLog "印刷内容ログ記録コールバック呼び出し有無設定処理に失敗しました。"
)";

const std::string kNoMutex = R"(
5 153100840 SigilSettingManagement::SetUseContentLog "Sigil設定ファイルへのロックが取得できませんでした。"
)";

const std::string kGivenUp = "5 153100520 SigilSettingManagement::SetUseContentLog *\n";

const std::string kThrown = R"(
5 153100530 SigilSettingManagement::SetUseContentLog "印刷内容ログ記録コールバック呼び出し有無設定に失敗しました。"
)";

std::string Good(const std::string& frameEnd) {
  return Fill(kOpened + kSet + kSaved + kUnlocked + frameEnd + kDone, {"1"});
}

void Check(const char* name, const Twists& twists, int result, const std::string& record) {
  SCOPED_TRACE(name);
  TestMachine machine;
  if (!Apply(twists)) return;
  EXPECT_EQ(SigilSettingSetUseContentLog(true), result);
  ExpectRecord(record);
}

TEST(ContentLog, StoresBothValuesAndSavesEachTime) {
  TestMachine machine;
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  EXPECT_EQ(SigilSettingSetUseContentLog(false), 0);
  EXPECT_EQ(SigilSettingSetUseContentLog(false), 0);
  std::string all;
  for (const char* value : {"1", "0", "0"})
    all += Fill(kOpened + kSet + kSaved + kUnlocked + kMutexGiven + kDone, {value});
  ExpectRecord(all);
}

TEST(ContentLog, EachFailureHasItsRecord) {
  const std::string refused =
      kMutexTaken + kInstance + kNoInstance + kMutexGiven + kGivenUp + kUnloaded + kExportFailed;
  const std::string absent = kMutexTaken + kNoInstance + kMutexGiven + kGivenUp + kExportFailed;
  Check("no mutex", Fault("CreateMutexW"), -101, kNotCreated + kNoMutex + kExportFailed);
  Check("failed wait", Fault("WaitForSingleObject"), -101, kNotAcquired + kNoMutex + kExportFailed);
  Check("no library", Fault("LoadLibraryW"), -101, absent);
  Check("no entry point", Fault("GetProcAddress"), -101,
        kMutexTaken + "component loaded\n" + kNoInstance + kMutexGiven + kGivenUp + kUnloaded +
            kExportFailed);
  Check("only the entry point that is used", Fault("GetProcAddress", 1), 0, Good(kMutexGiven));
  Check("instance refused", Gives(L"SigilCreateInstance", 1, -5), -101, refused);
  Check("instance with a positive result", Gives(L"SigilCreateInstance", 1, 1), -101,
        kMutexTaken + kInstance + kNoInstance + kMutexGiven + kGivenUp + "Settings::Release()\n" +
            kUnloaded + kExportFailed);
  Check("not saved", Gives(L"Settings::Save", 1, -1), 0,
        Fill(kOpened + kSet + kNotSaved + kUnlocked + kMutexGiven + kDone, {"1"}));
  Check("saved with a positive result", Gives(L"Settings::Save", 1, 7), 0, Good(kMutexGiven));
  Check("results that nobody reads",
        Gives(L"Settings::Lock", 0, -1) + Gives(L"Settings::UnLock", 0, -1) +
            Gives(L"Settings::Commit", 0, -1) + Gives(L"Settings::SetUseContentLog", 0, -1),
        0, Good(kMutexGiven));
  Check("no memory for the descriptor", Fault("LocalAlloc"), 0,
        Good("ReleaseMutex\nCloseHandle\n"));
  Check("descriptor not initialised", Fault("InitializeSecurityDescriptor"), 0,
        "LocalFree\n" + Good("ReleaseMutex\nCloseHandle\n"));
  Check("no access list", Fault("SetSecurityDescriptorDacl"), 0,
        "LocalFree\n" + Good("ReleaseMutex\nCloseHandle\n"));
  Check("exception while creating the instance", Throws(L"SigilCreateInstance"), -101,
        kMutexTaken + kInstance + kUnloaded + kMutexGiven + kThrown + kExportFailed);
  Check("exception while locking", Throws(L"Settings::Lock"), -101, kMutexTaken + kInstance + R"(
1 153400280 OperationSigilSettings::SigilLock "Settingsインスタンス：ロック開始"
Settings::Lock()
)" + kUnwound + kThrown + kExportFailed);
  Check("exception while saving", Throws(L"Settings::Save"), -101,
        Fill(kOpened + kSet, {"1"}) + "Settings::Commit()\nSettings::Save(0)\n" + kUnwound +
            kThrown + kExportFailed);
}

TEST(ContentLog, AnAbandonedMutexCostsOnePass) {
  TestMachine machine;
  const HANDLE mutex = AbandonMutex();
  EXPECT_EQ(SigilSettingSetUseContentLog(true), -101);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  ExpectRecord(R"(
5 100908 GetMutex_SigilSetting "Sigil設定ファイルへのロックが取得できませんでした。"
ReleaseMutex
CloseHandle
LocalFree
)" + kNoMutex + kExportFailed +
               Good(kMutexGiven));
  CloseHandle(mutex);
}

}  // namespace
}  // namespace tests
