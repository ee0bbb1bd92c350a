#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/management/expected.h"
#include "tests/support/policy.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

const std::string kFolder = R"(
4 153100320 SigilSettingManagement::GetEMSFolderPath "配信先ディレクトリが、設定されていません。"
)";

const std::string kFunctionRead = kFolder + R"x(
1 152100010 CSystemSettingMng::LoadFile "項目キー" "63"
3 152100030 CSystemSettingMng::ReadCSV "CSVデータはありません。"
2 152100020 CSystemSettingMng::LoadFile "透かしオプション 有効/無効：$1"
2 152100050 CSystemSettingMng::LoadFile "イメージログオプション 有効/無効：0"
3 153100660 SigilSettingManagement::IsWatermarkFuncSetting "透かし有効無効設定取得成功 透かし機能[$1](無：0 / 有：1)"
)x";

const std::string kFileUnread = kFolder + R"(
5 153100650 SigilSettingManagement::IsWatermarkFuncSetting "システム設定ファイルの読み込みに失敗しました"
)";

const std::string kScopeRead = R"(
CoInitialize
3 153100550 SigilSettingManagement::SetWatermarkAllPrinter "ポリシーファイルのプリンタ適応範囲値：$1"
CoUninitialize
)";

const std::string kBegin = kMutexTaken + kInstance + kFolder;
const std::string kWalk = kPrintersListed + kLocked;
const std::string kGivenBack = kUnlocked + kMutexGiven + kUnloaded;
const std::string kEnd = kSaved + kGivenBack;

const std::string kSwitched = R"(
Settings::GetPrinterSettings("$1")
PrinterSettings[$1]::GetLastSetting(out)
LastSetting[$1]::SetEnable($2)
LastSetting[$1]::Release()
PrinterSettings[$1]::Commit()
PrinterSettings[$1]::Save(0)
)";

const std::string kReleased = "PrinterSettings[$1]::Release()\n";

const std::string kEnabled = Fill(kSwitched, {"$1", "1"}) + R"(
1 153400060 OperationSigilSettings::EnableWatermark "透かし有効として設定ファイルに保存しました。Printer:[$1]"
PrinterSettings[$1]::Release()
)";

const std::string kDisabled = Fill(kSwitched, {"$1", "0"}) + R"(
1 153400100 OperationSigilSettings::DisableWatermark "透かし無効として設定ファイルに保存しました。Printer:[$1]"
PrinterSettings[$1]::Release()
)";

const std::string kClearedUnsaved = R"(
1 153400310 OperationSigilSettings::ClearWatermark "個別プリンタ透かし情報設定クリア処理完了"
PrinterSettings[$1]::Commit()
PrinterSettings[$1]::Save(0)
)";

const std::string kClearedSaved = kClearedUnsaved + R"(
1 153400100 OperationSigilSettings::ClearWatermark "透かし情報を削除して設定ファイルに保存しました。Printer:[$1]"
PrinterSettings[$1]::Release()
)";

const std::string kListed = R"(
Settings::GetPrinterSettings("$1")
PrinterSettings[$1]::GetWatermarkCount()
)";

const std::string kCleared = kListed + kClearedSaved;

const std::string kNobodyTold = R"(
CreateFileW
5 153100420 SigilSettingManagement::NotificationReleaseMode code 2 "パイプをオープンできませんでした"
LocalFree
)";

const std::string kSetDone = R"(
3 153000060 SigilSettingSetWaterMark "透かし有効処理が完了しました。"
)";
const std::string kSetFailed = R"(
5 153000050 SigilSettingSetWaterMark "透かし有効処理に失敗しました。"
)";
const std::string kReleaseDone = R"(
3 153000030 SigilSettingReleaseWaterMark "透かし無効処理が完了しました。"
)";
const std::string kServiceDone = R"(
3 153000120 SigilSettingReleaseWaterMarkForService "透かし無効処理（サービス側）が完了しました。"
)";
const std::string kServiceFailed = R"(
5 153000110 SigilSettingReleaseWaterMarkForService "透かし無効処理（サービス側）に失敗しました。"
)";

void Deliver(TestMachine& machine, const wchar_t* scope) {
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("\xEF\xBB\xBF" + platform::ToUtf8(Policy(1, scope, {}))));
  machine.SetPrinters({{L"会議室", kSuiteDriver, std::nullopt}, {L"他社", L"Other Driver", L""}});
}

TEST(Switch, ScopeDecidesWhatFollows) {
  const struct {
    int (*run)();
    const wchar_t* scope;
    const char* read;
    bool defaultOn, printerOn;
  } cases[] = {{SigilSettingSetWaterMark, L"0", "0", true, true},
               {SigilSettingSetWaterMark, L"1", "1", true, false},
               {SigilSettingSetWaterMark, L"2", "2", false, true},
               {SigilSettingSetWaterMark, L"3", "3", true, true},
               {SigilSettingSetWaterMark, nullptr, "0", true, true},
               {SigilSettingReleaseWaterMark, L"1", "1", false, false},
               {SigilSettingReleaseWaterMark, L"2", "2", false, false},
               {SigilSettingReleaseWaterMarkForService, L"2", "2", false, false}};
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    TestMachine machine;
    Deliver(machine, test.scope);
    const bool service = test.run == SigilSettingReleaseWaterMarkForService;
    const bool set = test.run == SigilSettingSetWaterMark;
    EXPECT_EQ(test.run(), set || service ? 0 : -2);
    const auto entry = [&](const char* name, bool on) {
      return Fill(on ? kEnabled : service ? kDisabled + kCleared : kDisabled, {name});
    };
    ExpectRecord((service ? "" : Fill(kFunctionRead, {"1"})) + kBegin +
                 Fill(kScopeRead, {test.read}) + kWalk + entry("*", test.defaultOn) +
                 entry("会議室", test.printerOn) + kEnd +
                 (service ? kServiceDone : kNobodyTold + (set ? kSetDone : kReleaseDone)));
  }
}

TEST(Switch, TheFunctionSwitchStopsBoth) {
  const std::string off = R"(
3 $1 "透かし機能が無効のため処理を中断しました"
)";
  const std::string unreadable = R"(
5 $1 "設定ファイルから設定値取得できないため処理を中断しました"
)";
  const struct {
    const char* file;
    int result;
    std::string read;
  } cases[] = {{"63,0\r\n", -200, Fill(kFunctionRead, {"0"}) + off},
               {"63,-1\r\n", -201, Fill(kFunctionRead, {"-1"}) + unreadable},
               {nullptr, -201, kFileUnread + unreadable}};
  for (const auto& test : cases) {
    TestMachine machine;
    if (test.file != nullptr) machine.Write(kSystemSetting, test.file);
    EXPECT_EQ(SigilSettingReleaseWaterMark(), test.result);
    EXPECT_EQ(SigilSettingSetWaterMark(), test.result);
    const bool isOff = test.result == -200;
    ExpectRecord(Fill(test.read, {isOff ? "153000270 SigilSettingReleaseWaterMark"
                                        : "153000280 SigilSettingReleaseWaterMark"}) +
                 Fill(test.read, {isOff ? "153000290 SigilSettingSetWaterMark"
                                        : "153000300 SigilSettingSetWaterMark"}));
  }
}

TEST(Switch, EachFailureBeforeTheWalkChangesNothing) {
  const std::string noMutex = R"(
5 153100860 SigilSettingManagement::SetWatermarkAllPrinter "Sigil設定ファイルへのロックが取得できませんでした。"
)";
  const std::string noScope = kMutexGiven + R"(
5 153100110 SigilSettingManagement::SetWatermarkAllPrinter "プリンタ適応範囲が取得できないため、全プリンタ透かし有効無効設定処理を中断"
Settings::Release()
component unloaded
)";
  const std::string refused = kBegin + R"(
CoInitialize
5 153100540 SigilSettingManagement::SetWatermarkAllPrinter "ポリシーXML解析処理に失敗　エラーコード：$1"
CoUninitialize
)" + noScope;
  const std::string thrown = R"(
5 153100100 SigilSettingManagement::SetWatermarkAllPrinter "全プリンタ透かし有効無効設定処理に失敗しました"
)";
  const std::string opened = kBegin + Fill(kScopeRead, {"0"}) + kWalk;
  const std::string good = SealPolicy(platform::ToUtf8(Policy(1, L"0", {})));
  const auto check = [](const char* name, const Twists& twists,
                        const std::optional<std::string>& policyFile, const std::string& record) {
    SCOPED_TRACE(name);
    TestMachine machine;
    Deliver(machine, L"0");
    machine.Remove(kPolicyFile);
    if (policyFile) machine.Write(kPolicyFile, *policyFile);
    if (!Apply(twists)) return;
    EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), -101);
    ExpectRecord(record + kServiceFailed);
  };
  check("no mutex", Fault("CreateMutexW"), good, kNotCreated + noMutex);
  check("failed wait", Fault("WaitForSingleObject"), good, kNotAcquired + noMutex);
  check("instance refused", Gives(L"SigilCreateInstance", 1, -1), good,
        kMutexTaken + kInstance + kNoInstance + kMutexGiven + R"(
5 153100050 SigilSettingManagement::SetWatermarkAllPrinter "Sigilインスタンス取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"
)" + kUnloaded);
  check("policy file not opened", Fault("_wfopen_s"), good, kBegin + R"(
5 153100560 SigilSettingManagement::SetWatermarkAllPrinter "ポリシーファイルの復号化に失敗しました。"
)" + noScope);
  check("empty policy file", Twists(), "", Fill(refused, {"-1"}));
  check("no document", Twists(), SealPolicy("<a><b></a>"), Fill(refused, {"-10"}));
  check("only one mark is taken off", Twists(), SealPolicy("\xEF\xBB\xBF\xEF\xBB\xBF"),
        Fill(refused, {"-10"}));
  check("scope of no number it takes", Twists(), SealPolicy(platform::ToUtf8(Policy(1, L"-1", {}))),
        kBegin + Fill(kScopeRead, {"-1"}) + noScope);
  check("printers not listed", Fault("EnumPrintersW", 1), good,
        kBegin + Fill(kScopeRead, {"0"}) + kPrintersNotListed + kMutexGiven + R"(
5 153100040 SigilSettingManagement::SetWatermarkAllPrinter "プリンタ情報取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"
Settings::Release()
component unloaded
)");
  check("exception in the walk", Throws(L"LastSetting::SetEnable"), good, opened + R"(
Settings::GetPrinterSettings("*")
PrinterSettings[*]::GetLastSetting(out)
LastSetting[*]::SetEnable(0)
LastSetting[*]::Release()
PrinterSettings[*]::Release()
)" + kUnwound + thrown);

  check("no policy file", Twists(), std::nullopt, kBegin + R"(
5 153100570 SigilSettingManagement::SetWatermarkAllPrinter "暗号化のポリシー（DAT）ファイルは存在しない。"
)" + noScope);

  TestMachine machine;
  Deliver(machine, L"0");
  machine.Write(kKeySource, std::string(34, 'k'));
  EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), -101);
  ExpectRecord(kBegin + kUnwound + thrown + kServiceFailed);
}

const std::string kPrinterFailed = R"(
4 153100090 SigilSettingManagement::SetWatermarkAllPrinter "アサギリプリンタドライバの透かし設定に失敗しました。プリンタ：$1　設定：$2"
)";

TEST(Switch, EachFailureOfAnEntryIsToldAndCounted) {
  const std::string refused = R"(
Settings::GetPrinterSettings("$1")
4 153400080 OperationSigilSettings::DisableWatermark "PrinterSettingインターフェイス取得にに失敗しました。DisableWatermark処理を中断。Printer:[$1]"
)";
  const std::string noLast = R"(
Settings::GetPrinterSettings("$1")
PrinterSettings[$1]::GetLastSetting(out)
4 153400090 OperationSigilSettings::DisableWatermark "LastSettingインターフェイス取得にに失敗しました。DisableWatermark処理を中断。Printer:[$1]"
)";
  const std::string unsaved = Fill(kSwitched, {"$1", "0"}) + R"(
4 153400110 OperationSigilSettings::DisableWatermark "設定ファイルの保存に失敗しました。Printer:[$1]"
PrinterSettings[$1]::Release()
)";
  const std::string uncleared = R"(
Settings::GetPrinterSettings("$1")
4 153400080 OperationSigilSettings::ClearWatermark *
)";
  const std::string clearUnsaved = kListed + kClearedUnsaved + R"(
4 153400110 OperationSigilSettings::ClearWatermark "設定ファイルの保存に失敗しました。Printer:[$1]"
PrinterSettings[$1]::Release()
)";
  const std::string someCleared = kListed + R"(
PrinterSettings[$1]::GetWatermarkInfo(0, guid, buffer, 255)
PrinterSettings[$1]::GetWatermarkInfo(1, guid, buffer, 255)
PrinterSettings[$1]::GetWatermarkInfo(2, guid, buffer, 255)
PrinterSettings[$1]::DeleteWatermark(O1)
PrinterSettings[$1]::DeleteWatermark(O3)
)" + kClearedSaved;
  const std::string good = kDisabled + kCleared;
  const std::string failed = Fill(kPrinterFailed, {"$1", "0"});
  // The script meets the default entry first, and the printer after it.
  const auto check = [](const char* name, const Twists& twists, const std::string& defaultEntry,
                        const std::string& printer, int result) {
    SCOPED_TRACE(name);
    TestMachine machine;
    Deliver(machine, L"0");
    if (!Apply(twists)) return;
    EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), result);
    ExpectRecord(kBegin + Fill(kScopeRead, {"0"}) + kWalk + Fill(defaultEntry, {"*"}) +
                 Fill(printer, {"会議室"}) + kEnd + (result == 0 ? kServiceDone : kServiceFailed));
  };
  check("default entry refused", Gives(L"Settings::GetPrinterSettings", 1, 1),
        refused + kReleased + kCleared, good, 0);
  check("printer refused", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 1, -1), good,
        refused + kCleared + failed, -101);
  check("no last setting", Gives(L"PrinterSettings::GetLastSetting", 0, -1),
        noLast + kReleased + kCleared, noLast + kReleased + kCleared + failed, -101);
  check("a last setting with a positive result", Gives(L"PrinterSettings::GetLastSetting", 1, 1),
        noLast + "LastSetting[$1]::Release()\n" + kReleased + kCleared, good, 0);
  check("not saved", Gives(L"PrinterSettings::Save", 3, -1), good, unsaved + kCleared + failed,
        -101);
  check("saved with a positive result", Gives(L"PrinterSettings::Save", 0, 3), good, good, 0);
  check("clearing refused", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 2, 1), good,
        kDisabled + uncleared + kReleased, 0);
  check("clearing not saved", Gives(L"PrinterSettings::Save", 4, -1), good,
        kDisabled + clearUnsaved, 0);
  check("a watermark cannot be told",
        Holds(L"watermarks 会議室", L"3") + Gives(L"PrinterSettings::GetWatermarkInfo", 2, -1) +
            Gives(L"PrinterSettings::DeleteWatermark", 0, -1),
        good, kDisabled + someCleared, 0);
}

TEST(Switch, FailedPrintersAreCountedWhileTheOthersFollow) {
  TestMachine machine;
  Deliver(machine, L"1");
  machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt},
                       {L"乙", kSuiteDriver, std::nullopt},
                       {L"丙", kSuiteDriver, std::nullopt}});
  RecorderScript(L"Settings::GetPrinterSettings(\"*\")", 1, -5);
  RecorderScript(L"PrinterSettings::Save", 1, -1);
  RecorderScript(L"Settings::Save", 1, -1);
  RecorderScript(L"LastSetting::SetEnable", 0, -1);
  EXPECT_EQ(SigilSettingSetWaterMark(), -101);
  ExpectRecord(Fill(kFunctionRead, {"1"}) + kBegin + Fill(kScopeRead, {"1"}) + kWalk + R"(
Settings::GetPrinterSettings("*")
4 153400040 OperationSigilSettings::EnableWatermark "PrinterSettingインターフェイス取得にに失敗しました。EnableWatermark処理を中断。Printer:[*]"
)" + Fill(kSwitched, {"甲", "0"}) +
               R"(
4 153400110 OperationSigilSettings::DisableWatermark "設定ファイルの保存に失敗しました。Printer:[甲]"
PrinterSettings[甲]::Release()
)" + Fill(kPrinterFailed, {"甲", "1"}) +
               Fill(kDisabled, {"乙"}) + Fill(kDisabled, {"丙"}) + kNotSaved + kGivenBack +
               kSetFailed);
}

TEST(Switch, FailedEnablingIsTold) {
  TestMachine machine;
  Deliver(machine, L"0");
  RecorderScript(L"PrinterSettings::GetLastSetting", 1, -1);
  RecorderScript(L"PrinterSettings::Save", 1, -1);
  EXPECT_EQ(SigilSettingSetWaterMark(), -101);
  ExpectRecord(Fill(kFunctionRead, {"1"}) + kBegin + Fill(kScopeRead, {"0"}) + kWalk + R"(
Settings::GetPrinterSettings("*")
PrinterSettings[*]::GetLastSetting(out)
4 153400050 OperationSigilSettings::EnableWatermark "LastSettingインターフェイス取得にに失敗しました。EnableWatermark処理を中断。Printer:[*]"
PrinterSettings[*]::Release()
)" + Fill(kSwitched, {"会議室", "1"}) +
               R"(
4 153400070 OperationSigilSettings::EnableWatermark "設定ファイルの保存に失敗しました。Printer:[会議室]"
PrinterSettings[会議室]::Release()
)" + Fill(kPrinterFailed, {"会議室", "1"}) +
               kEnd + kSetFailed);
}

}  // namespace
}  // namespace tests
