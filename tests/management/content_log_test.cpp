#include <gtest/gtest.h>

#include <functional>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "tests/management/expected.h"
#include "tests/recorder/recorder.h"
#include "tests/support/test_machine.h"

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

struct Case {
  const char* name;
  bool needsFaults;
  std::function<void()> script;
  int result;
  std::string record;
};

void Run(const Case& test) {
  SCOPED_TRACE(test.name);
  if (test.needsFaults && !platform::kHasFaults) return;
  TestMachine machine;
  test.script();
  EXPECT_EQ(SigilSettingSetUseContentLog(true), test.result);
  ExpectRecord(test.record);
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
  const Case cases[] = {
      {"no mutex", true, [] { platform::SetFault("CreateMutexW", 0, ERROR_ACCESS_DENIED); }, -101,
       kNotCreated + kNoMutex + kExportFailed},
      {"failed wait", true,
       [] { platform::SetFault("WaitForSingleObject", 0, ERROR_INVALID_HANDLE); }, -101,
       kNotAcquired + kNoMutex + kExportFailed},
      {"no library", true, [] { platform::SetFault("LoadLibraryW", 0, ERROR_MOD_NOT_FOUND); }, -101,
       absent},
      {"no entry point", true,
       [] { platform::SetFault("GetProcAddress", 0, ERROR_PROC_NOT_FOUND); }, -101,
       kMutexTaken + "component loaded\n" + kNoInstance + kMutexGiven + kGivenUp + kUnloaded +
           kExportFailed},
      {"only the entry point that is used", true,
       [] { platform::SetFault("GetProcAddress", 1, ERROR_PROC_NOT_FOUND); }, 0, Good(kMutexGiven)},
      {"instance refused", false, [] { RecorderScript(L"SigilCreateInstance", 1, -5); }, -101,
       refused},
      {"instance refused by a positive result", false,
       [] { RecorderScript(L"SigilCreateInstance", 1, 1); }, -101, refused},
      {"not saved", false, [] { RecorderScript(L"Settings::Save", 1, -1); }, 0,
       Fill(kOpened + kSet + kNotSaved + kUnlocked + kMutexGiven + kDone, {"1"})},
      {"saved with a positive result", false, [] { RecorderScript(L"Settings::Save", 1, 7); }, 0,
       Good(kMutexGiven)},
      {"results that nobody reads", false,
       [] {
         for (const wchar_t* call : {L"Settings::Lock", L"Settings::UnLock", L"Settings::Commit",
                                     L"Settings::SetUseContentLog"})
           RecorderScript(call, 0, -1);
       },
       0, Good(kMutexGiven)},
      {"no memory for the descriptor", true,
       [] { platform::SetFault("LocalAlloc", 0, ERROR_NOT_ENOUGH_MEMORY); }, 0,
       Good("ReleaseMutex\nCloseHandle\n")},
      {"descriptor not initialised", true,
       [] { platform::SetFault("InitializeSecurityDescriptor", 0, ERROR_INVALID_PARAMETER); }, 0,
       "LocalFree\n" + Good("ReleaseMutex\nCloseHandle\n")},
      {"no access list", true,
       [] { platform::SetFault("SetSecurityDescriptorDacl", 0, ERROR_INVALID_PARAMETER); }, 0,
       "LocalFree\n" + Good("ReleaseMutex\nCloseHandle\n")},
      {"exception while creating the instance", true,
       [] { RecorderScriptThrow(L"SigilCreateInstance", 1); }, -101,
       kMutexTaken + kInstance + kUnloaded + kMutexGiven + kThrown + kExportFailed},
      {"exception while locking", true,
       [] { RecorderScriptThrow(L"Settings::Lock", 1); }, -101, kMutexTaken + kInstance + R"(
1 153400280 OperationSigilSettings::SigilLock "Settingsインスタンス：ロック開始"
Settings::Lock()
)" + kUnwound + kThrown + kExportFailed},
      {"exception while saving", true, [] { RecorderScriptThrow(L"Settings::Save", 1); }, -101,
       Fill(kOpened + kSet, {"1"}) + "Settings::Commit()\nSettings::Save(0)\n" + kUnwound +
           kThrown + kExportFailed},
  };
  for (const Case& test : cases) Run(test);
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
