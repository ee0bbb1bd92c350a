#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "tests/management/expected.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

const std::string kEndLine = R"(
1 153100810 SigilSettingManagement::UpdateExcludePrinter "Sigil除外設定更新処理完了"
)";

const std::string kExportDone = R"(
3 153000170 SigilSettingUpdateExcludePrinter "Sigil除外更新処理が完了しました。"
)";

const std::string kExportFailed = R"(
5 153000160 SigilSettingUpdateExcludePrinter "Sigil除外更新処理に失敗しました。"
)";

const std::string kThrown = R"(
4 153100800 SigilSettingManagement::UpdateExcludePrinter "Sigil除外設定更新処理に失敗しました"
)" + kEndLine + kExportFailed;

const std::string kChecked = R"(
2 153100760 SigilSettingManagement::UpdateExcludePrinter "[000]除外プリンターチェック：[プリンタ名：他社]"
1 153100770 SigilSettingManagement::UpdateExcludePrinter "プリンタコメント無し"
)";

const std::string kAdded = kChecked + R"(
Settings::AddExcludePrinter("他社", guid)
Settings::Commit()
3 153400150 OperationSigilSettings::AddExcludePrinter "除外プリンタ追加実施。Printer:[他社]"
)";

const std::string kGivenBack = kUnlocked + kMutexGiven + kUnloaded + kEndLine + kExportDone;

TEST(Exclude, ListsAreRebuiltFromThePrinters) {
  TestMachine machine;
  machine.SetPrinters({{L"他社", L"Other Driver", std::nullopt},
                       {L"会議室", kSuiteDriver, L"3F"},
                       {L"受付", L"Other Driver", L""},
                       {L"監視", L"Other Driver", L"2F [監視対象プリンタ] 東"},
                       {L"半角", L"Other Driver", L"[監視対象ﾌﾟﾘﾝﾀ]"}});
  RecorderSetState(L"excludes", L"3");
  RecorderSetState(L"second excludes", L"3");
  RecorderScript(L"Settings::GetExcludePrinter", 2, -1);
  RecorderScript(L"Settings::GetSecondExclude", 1, 1);
  RecorderScript(L"Settings::DeleteExcludePrinter", 0, -1);
  RecorderScript(L"Settings::AddExcludePrinter", 0, -1);
  EXPECT_EQ(SigilSettingUpdateExcludePrinter(), 0);
  ExpectRecord(kPrintersListed + kOpened + R"(
Settings::GetExcludePrinterCount()
Settings::GetExcludePrinter(0, guid, null, length)
Settings::GetExcludePrinter(1, guid, null, length)
Settings::GetExcludePrinter(2, guid, null, length)
Settings::DeleteExcludePrinter(E1)
Settings::DeleteExcludePrinter(E3)
Settings::GetSecondExcludeCount()
Settings::GetSecondExclude(0, guid, null, length)
Settings::GetSecondExclude(1, guid, null, length)
Settings::GetSecondExclude(2, guid, null, length)
Settings::DeleteSecondExclude(S2)
Settings::DeleteSecondExclude(S3)
Settings::Commit()
Settings::Save(0)
1 153400120 OperationSigilSettings::AllDeleteExclude "除外プリンタの全削除して設定ファイルに保存しました。"
)" + kAdded + R"(
2 153100760 SigilSettingManagement::UpdateExcludePrinter "[001]除外プリンターチェック：[プリンタ名：会議室]"
1 153400140 OperationSigilSettings::AddExcludePrinter "除外対象ではないため無処理。Printer:[会議室]"
2 153100760 SigilSettingManagement::UpdateExcludePrinter "[002]除外プリンターチェック：[プリンタ名：受付]"
1 153100780 SigilSettingManagement::UpdateExcludePrinter "プリンタコメントに監視対象コメント無し"
Settings::AddExcludePrinter("受付", guid)
Settings::Commit()
3 153400150 OperationSigilSettings::AddExcludePrinter "除外プリンタ追加実施。Printer:[受付]"
2 153100760 SigilSettingManagement::UpdateExcludePrinter "[003]除外プリンターチェック：[プリンタ名：監視]"
1 153100790 SigilSettingManagement::UpdateExcludePrinter "プリンタコメントに監視対象コメント有り"
1 153400140 OperationSigilSettings::AddExcludePrinter "除外対象ではないため無処理。Printer:[監視]"
2 153100760 SigilSettingManagement::UpdateExcludePrinter "[004]除外プリンターチェック：[プリンタ名：半角]"
1 153100780 SigilSettingManagement::UpdateExcludePrinter "プリンタコメントに監視対象コメント無し"
Settings::AddExcludePrinter("半角", guid)
Settings::Commit()
3 153400150 OperationSigilSettings::AddExcludePrinter "除外プリンタ追加実施。Printer:[半角]"
)" + kSaved + kGivenBack);
}

TEST(Exclude, AMachineWithoutPrintersEmptiesTheLists) {
  TestMachine machine;
  EXPECT_EQ(SigilSettingUpdateExcludePrinter(), 0);
  ExpectRecord(kPrintersListed + kOpened + kExcludesCleared + kSaved + kGivenBack);
}

TEST(Exclude, EachFailureHasItsRecord) {
  const std::string noMutex = R"(
5 153100850 SigilSettingManagement::UpdateExcludePrinter "Sigil設定ファイルへのロックが取得できませんでした。"
)" + kExportFailed;
  const auto check = [](const char* name, const Twists& twists, int result,
                        const std::string& record) {
    SCOPED_TRACE(name);
    TestMachine machine;
    machine.SetPrinters({{L"他社", L"Other Driver", std::nullopt}});
    if (!Apply(twists)) return;
    EXPECT_EQ(SigilSettingUpdateExcludePrinter(), result);
    ExpectRecord(record);
  };
  check("printers not listed", Fault("EnumPrintersW", 1), -101,
        kPrintersNotListed + "LocalFree\n" + R"(
5 153100750 SigilSettingManagement::UpdateExcludePrinter "プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"
)" + kExportFailed);
  check("no mutex", Fault("CreateMutexW"), -101, kPrintersListed + kNotCreated + noMutex);
  check("failed wait", Fault("WaitForSingleObject"), -101,
        kPrintersListed + kNotAcquired + noMutex);
  check("instance refused", Gives(L"SigilCreateInstance", 1, -1),
        -101, kPrintersListed + kMutexTaken + kInstance + kNoInstance + kMutexGiven + R"(
5 153100750 SigilSettingManagement::UpdateExcludePrinter "Sigilインスタンス取得に失敗したため、全プリンタ透かし情報設定処理を中断"
)" + kUnloaded + kExportFailed);
  check("exception while an entry is added", Throws(L"Settings::AddExcludePrinter"), -101,
        kPrintersListed + kOpened + kExcludesCleared + kChecked +
            "Settings::AddExcludePrinter(\"他社\", guid)\n" + kUnwound + kThrown);
  check("emptied lists not saved",
        Gives(L"Settings::Save", 1, -1), 0, kPrintersListed + kOpened + R"(
Settings::GetExcludePrinterCount()
Settings::GetSecondExcludeCount()
Settings::Commit()
Settings::Save(0)
4 153400130 OperationSigilSettings::AllDeleteExclude "設定ファイルの保存に失敗しました。"
)" + kAdded + kSaved + kGivenBack);
  check("additions not saved", Gives(L"Settings::Save", 2, -1), 0,
        kPrintersListed + kOpened + kExcludesCleared + kAdded + kNotSaved + kGivenBack);
}

}  // namespace
}  // namespace tests
