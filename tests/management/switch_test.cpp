#include <gtest/gtest.h>

#include <functional>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/management/expected.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

const std::string kFolder = R"(
4 153100320 SigilSettingManagement::GetEMSFolderPath "配信先ディレクトリが、設定されていません。"
)";

const std::string kFunctionRead = kFolder + R"(
1 152100010 CSystemSettingMng::LoadFile "項目キー" "63"
3 152100030 CSystemSettingMng::ReadCSV "CSVデータはありません。"
2 152100020 CSystemSettingMng::LoadFile "透かしオプション 有効/無効：$1"
2 152100050 CSystemSettingMng::LoadFile "イメージログオプション 有効/無効：0"
3 153100660 SigilSettingManagement::IsWatermarkFuncSetting "透かし有効無効設定取得成功 透かし機能[$1](無：0 / 有：1)"
)";

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

struct Case {
  const char* name;
  bool needsFaults;
  std::function<void(TestMachine&)> script;
  std::string record;
};

TEST(Switch, EachFailureBeforeTheWalkChangesNothing) {
  const std::string noMutex = R"(
5 153100860 SigilSettingManagement::SetWatermarkAllPrinter "Sigil設定ファイルへのロックが取得できませんでした。"
)";
  const std::string noScope = kMutexGiven + R"(
5 153100110 SigilSettingManagement::SetWatermarkAllPrinter "プリンタ適応範囲が取得できないため、全プリンタ透かし有効無効設定処理を中断"
)" + kUnloaded;
  const std::string refused = kBegin + R"(
CoInitialize
5 153100540 SigilSettingManagement::SetWatermarkAllPrinter "ポリシーXML解析処理に失敗　エラーコード：$1"
CoUninitialize
)" + noScope;
  const std::string thrown = R"(
5 153100100 SigilSettingManagement::SetWatermarkAllPrinter "全プリンタ透かし有効無効設定処理に失敗しました"
)";
  const std::string opened = kBegin + Fill(kScopeRead, {"0"}) + kWalk;
  const Case cases[] = {
      {"no mutex", true,
       [](TestMachine&) { platform::SetFault("CreateMutexW", 0, ERROR_ACCESS_DENIED); },
       kNotCreated + noMutex},
      {"failed wait", true,
       [](TestMachine&) { platform::SetFault("WaitForSingleObject", 0, ERROR_INVALID_HANDLE); },
       kNotAcquired + noMutex},
      {"instance refused", false,
       [](TestMachine&) { RecorderScript(L"SigilCreateInstance", 1, 1); },
       kMutexTaken + kInstance + kNoInstance + kMutexGiven + R"(
5 153100050 SigilSettingManagement::SetWatermarkAllPrinter "Sigilインスタンス取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"
)" + kUnloaded},
      {"no policy file", false, [](TestMachine& machine) { machine.Remove(kPolicyFile); },
       kBegin + R"(
5 153100570 SigilSettingManagement::SetWatermarkAllPrinter "暗号化のポリシー（DAT）ファイルは存在しない。"
)" + noScope},
      {"policy file not opened", true,
       [](TestMachine&) { platform::SetFault("_wfopen_s", 0, ERROR_ACCESS_DENIED); }, kBegin + R"(
5 153100560 SigilSettingManagement::SetWatermarkAllPrinter "ポリシーファイルの復号化に失敗しました。"
)" + noScope},
      {"empty policy file", false, [](TestMachine& machine) { machine.Write(kPolicyFile, ""); },
       Fill(refused, {"-1"})},
      {"no document", false,
       [](TestMachine& machine) { machine.Write(kPolicyFile, SealPolicy("<a><b></a>")); },
       Fill(refused, {"-10"})},
      {"only one mark is taken off", false,
       [](TestMachine& machine) {
         machine.Write(kPolicyFile, SealPolicy("\xEF\xBB\xBF\xEF\xBB\xBF"));
       },
       Fill(refused, {"-10"})},
      {"scope of no number it takes", false, [](TestMachine& machine) { Deliver(machine, L"-1"); },
       kBegin + Fill(kScopeRead, {"-1"}) + noScope},
      {"printers not listed", true,
       [](TestMachine&) { platform::SetFault("EnumPrintersW", 1, ERROR_ACCESS_DENIED); },
       kBegin + Fill(kScopeRead, {"0"}) + kPrintersNotListed + kMutexGiven + R"(
5 153100040 SigilSettingManagement::SetWatermarkAllPrinter "プリンタ情報取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"
)" + kUnloaded},
      {"key source too long", false,
       [](TestMachine& machine) { machine.Write(kKeySource, std::string(34, 'k')); },
       kBegin + kUnwound + thrown},
      {"exception in the walk", true,
       [](TestMachine&) { RecorderScriptThrow(L"LastSetting::SetEnable", 1); }, opened + R"(
Settings::GetPrinterSettings("*")
PrinterSettings[*]::GetLastSetting(out)
LastSetting[*]::SetEnable(0)
LastSetting[*]::Release()
PrinterSettings[*]::Release()
)" + kUnwound + thrown},
  };
  for (const Case& test : cases) {
    SCOPED_TRACE(test.name);
    if (test.needsFaults && !platform::kHasFaults) continue;
    TestMachine machine;
    Deliver(machine, L"0");
    test.script(machine);
    EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), -101);
    ExpectRecord(test.record + kServiceFailed);
  }
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
PrinterSettings[$1]::Release()
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
  const struct {
    const char* name;
    std::function<void()> script;
    std::string defaultEntry, printer;
    int result;
  } cases[] = {
      {"default entry refused", [] { RecorderScript(L"Settings::GetPrinterSettings", 1, 1); },
       refused + kCleared, good, 0},
      {"printer refused",
       [] { RecorderScript(L"Settings::GetPrinterSettings(\"会議室\")", 1, -1); }, good,
       refused + kCleared + failed, -101},
      {"no last setting", [] { RecorderScript(L"PrinterSettings::GetLastSetting", 0, -1); },
       noLast + kCleared, noLast + kCleared + failed, -101},
      {"not saved", [] { RecorderScript(L"PrinterSettings::Save", 3, -1); }, good,
       unsaved + kCleared + failed, -101},
      {"saved with a positive result", [] { RecorderScript(L"PrinterSettings::Save", 0, 3); }, good,
       good, 0},
      {"clearing refused",
       [] { RecorderScript(L"Settings::GetPrinterSettings(\"会議室\")", 2, 1); }, good,
       kDisabled + uncleared, 0},
      {"clearing not saved", [] { RecorderScript(L"PrinterSettings::Save", 4, -1); }, good,
       kDisabled + clearUnsaved, 0},
      {"a watermark cannot be told",
       [] {
         RecorderSetState(L"watermarks 会議室", L"3");
         RecorderScript(L"PrinterSettings::GetWatermarkInfo", 2, -1);
         RecorderScript(L"PrinterSettings::DeleteWatermark", 0, -1);
       },
       good, kDisabled + someCleared, 0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    TestMachine machine;
    Deliver(machine, L"0");
    test.script();
    EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), test.result);
    ExpectRecord(kBegin + Fill(kScopeRead, {"0"}) + kWalk + Fill(test.defaultEntry, {"*"}) +
                 Fill(test.printer, {"会議室"}) + kEnd +
                 (test.result == 0 ? kServiceDone : kServiceFailed));
  }
}

TEST(Switch, FailedPrintersAreCountedWhileTheOthersFollow) {
  TestMachine machine;
  Deliver(machine, L"1");
  machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt},
                       {L"乙", kSuiteDriver, std::nullopt},
                       {L"丙", kSuiteDriver, std::nullopt}});
  RecorderScript(L"Settings::GetPrinterSettings(\"*\")", 1, 5);
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
