#include <gtest/gtest.h>

#include <cstring>

#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/management/expected.h"
#include "tests/support/policy.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

const TestPrinter kOurs = {L"会議室", kSuiteDriver, std::nullopt};

const std::string kPrepared = "component loaded\n" + kFolderLearned + R"(
2 153100906 SigilSettingManagement::PrepareUserFullName "ユーザ情報ファイルパス【C:\SigilTest\UserInfoWM.ini】"
2 153100909 SigilSettingManagement::PrepareUserFullName "ユーザフルネーム取得済みのため、スキップ"
)" + kUnloaded;

const std::string kNothingToDelete = kExcludesCleared + R"(
Settings::GetPrinterSettingCount()
Settings::GetDriverSettingCount()
1 153400270 OperationSigilSettings::AllDeletePrinterSetting "登録済みプリンタ個別設定情報オール削除処理完了"
)";

/// A printer with the suite's driver is looked at and stays off the exclude list.
const std::string kOursChecked = R"(
2 153100640 SigilSettingManagement::UpdateWaterMarkSetting "[000]除外プリンターチェック：[プリンタ名：会議室]"
1 153400140 OperationSigilSettings::AddExcludePrinter "除外対象ではないため無処理。Printer:[会議室]"
)";

const std::string kBegin =
    kPrintersListed + kPrepared + kOpened + kNothingToDelete + kOursChecked + "CoInitialize\n";

const std::string kRegistered = R"(
CoUninitialize
1 153100610 SigilSettingManagement::RegisterWatermarkInfo "透かし情報登録処理終了"
)";

const std::string kSucceeded = R"(
2 153100620 SigilSettingManagement::UpdateWaterMarkSetting "透かし情報登録処理に成功しました。"
)";

const std::string kExportDone = "component loaded\n" + kFolderLearned + kUnloaded + R"(
3 153000090 SigilSettingUpdateWaterMarkSetting "透かし設定更新処理が完了しました。"
)";

const std::string kEnd =
    kRegistered + kSaved + kSucceeded + kUnlocked + kMutexGiven + kUnloaded + kExportDone;

const std::string kExportFailed = R"(
5 153000080 SigilSettingUpdateWaterMarkSetting "透かし設定更新処理に失敗しました。"
)";

/// Registration failed: nothing is saved, all is given back.
const std::string kNotRegistered = R"(
4 153100630 SigilSettingManagement::UpdateWaterMarkSetting "透かし情報設定処理に失敗しました。"
)" + kUnlocked + kMutexGiven + kUnloaded +
                                   kExportFailed;

const std::string kPassThrown = R"(
4 153100160 SigilSettingManagement::UpdateWaterMarkSetting "全プリンタ透かし情報設定処理に失敗しました"
)" + kExportFailed;

const std::string kWalkThrown = R"(
5 153100600 SigilSettingManagement::RegisterWatermarkInfo "透かし情報登録処理に異常が発生しました。"
)";

const std::string kRecordOpened = R"(
Settings::GetPrinterSettings("$1")
1 153400170 OperationSigilSettings::GetPrinterSettingsOpe "PrinterSettingsインスタンス取得成功 プリンタ名：$1"
)";

const std::string kRecordRefused = R"(
Settings::GetPrinterSettings("$1")
5 153400160 OperationSigilSettings::GetPrinterSettingsOpe "PrinterSettingsインスタンス取得失敗 プリンタ名：$1"
)";

const std::string kOldCleared = R"(
PrinterSettings[$1]::GetWatermarkCount()
2 153100200 SigilSettingManagement::DeleteWatermarkInfoALL "個別プリンタ透かし情報設定クリア処理完了"
)";

const std::string kCustomFound = R"(
PrinterSettings[$1]::GetCustomSetting("HLMimosaOption", out)
CustomSetting[$1]::SetName("HLMimosaOption")
)";

const std::string kCustomOff = kCustomFound + R"(
CustomSetting[$1]::SetEnable(0)
CustomSetting[$1]::Release()
)";

const std::string kLastOff = R"(
PrinterSettings[$1]::GetLastSetting(out)
LastSetting[$1]::SetEnable(0)
LastSetting[$1]::Release()
)";

const std::string kSettingsOff = kCustomOff + kLastOff;

/// $2: the GUIDs, $3: their number.
const std::string kSettingsOn = kCustomFound + R"(
CustomSetting[$1]::SetWatermarks($2, $3)
CustomSetting[$1]::SetEnable(1)
CustomSetting[$1]::Release()
PrinterSettings[$1]::GetLastSetting(out)
LastSetting[$1]::SetWatermarks($2, $3)
LastSetting[$1]::SetEnable(1)
LastSetting[$1]::Release()
)";

const std::string kRecordKept = R"(
PrinterSettings[$1]::Commit()
PrinterSettings[$1]::Save(0)
PrinterSettings[$1]::Release()
)";

const std::string kEmptyEntry = kRecordOpened + kOldCleared + kSettingsOff + kRecordKept;

const std::string kNameResolved = kFolderLearned + R"(
1 153100951 SigilSettingManagement::GetUserFullName "Winユーザフルネームあり"
2 153100954 SigilSettingManagement::GetUserFullName "取得ネーム：山田 花子"
)";

/// $1: the record's name, $2: the watermark's number, $3: the element.
const std::string kHeaderChosen = R"(
2 153100210 SigilSettingManagement::SetSortingWatermarkInfo "フッターヘッダー 設定実施　ElementID：$3"
PrinterSettings[$1]::CreateWatermark(out)
)";
const std::string kHeaderDone = R"(
Watermark[W$2]::GetId(guid)
Watermark[W$2]::Release()
3 153100270 SigilSettingManagement::SetHeaderFooterInfo "フッターヘッダー設定処理完了　ElementID：$3 → GUID：0000000$2-0057-4000-a1b2-c3d4e5f60718"
)";
const std::string kStampChosen = R"(
2 153100220 SigilSettingManagement::SetSortingWatermarkInfo "スタンプ 設定実施　ElementID：$3"
PrinterSettings[$1]::CreateWatermark(out)
)";
const std::string kStampDone = R"(
Watermark[W$2]::GetId(guid)
Watermark[W$2]::Release()
3 153100310 SigilSettingManagement::SetStampInfo "スタンプ設定処理完了　ElementID：$3 → GUID：0000000$2-0057-4000-a1b2-c3d4e5f60718"
)";

/// What a header without any property becomes.
const std::string kBareHeader =
    kHeaderChosen + "Watermark[W$2]::SetName(\"$3_\")\n" + kNameResolved + R"(
Watermark[W$2]::SetText("")
Watermark[W$2]::SetFontSize(1.0)
Watermark[W$2]::SetFontName("")
Watermark[W$2]::SetColor(0)
Watermark[W$2]::SetBold(0)
Watermark[W$2]::SetItalic(0)
Watermark[W$2]::SetUnderLine(0)
Watermark[W$2]::SetFit(0)
Watermark[W$2]::SetOpacity(0)
Watermark[W$2]::SetRotate(0)
Watermark[W$2]::SetPrintPos(0)
Watermark[W$2]::SetPositionOption(0)
Watermark[W$2]::SetXOffset(0.0)
Watermark[W$2]::SetYOffset(0.0)
)" + kHeaderDone;

const Element kHeader = {L"E1",
                         {{L"Kind", L"0"},
                          {L"Name", L"頭"},
                          {L"Text", L"{WinUser}と{WinUser}と{winuser}"},
                          {L"FontSize", L"10.5"},
                          {L"FontName", L"{WinUser}体"},
                          {L"Color", L"0xFF0080"},
                          {L"Bold", L"1"},
                          {L"Italic", L"1"},
                          {L"UnderLine", L"1"},
                          {L"Fit", L"1"},
                          {L"Opacity", L"40"},
                          {L"Rotate", L"90"},
                          {L"PrintPos", L"8"},
                          {L"XOffset", L"-12.5"},
                          {L"YOffset", L"3"},
                          {L"RepeatType", L"3"}}};

const std::string kHeaderMapped =
    kHeaderChosen + "Watermark[W$2]::SetName(\"E1_頭\")\n" + kNameResolved + R"(
Watermark[W$2]::SetText("山田 花子と山田 花子と{winuser}")
Watermark[W$2]::SetFontSize(10.5)
Watermark[W$2]::SetFontName("{WinUser}体")
Watermark[W$2]::SetColor(16711808)
Watermark[W$2]::SetBold(1)
Watermark[W$2]::SetItalic(1)
Watermark[W$2]::SetUnderLine(1)
Watermark[W$2]::SetFit(1)
Watermark[W$2]::SetOpacity(40)
Watermark[W$2]::SetRotate(90)
Watermark[W$2]::SetPrintPos(4)
Watermark[W$2]::SetPositionOption(0)
Watermark[W$2]::SetXOffset(-12.5)
Watermark[W$2]::SetYOffset(3.0)
)" + kHeaderDone;

const Element kStamp = {L"E2",
                        {{L"Kind", L"1"},
                         {L"Text", L"社外秘"},
                         {L"PrintPos", L"2"},
                         {L"XOffset", L"5"},
                         {L"RepeatType", L"2"},
                         {L"RepeatHSpace", L"30"},
                         {L"RepeatVSpace", L"-40"}}};

const std::string kStampMapped =
    kStampChosen + "Watermark[W$2]::SetName(\"E2_\")\n" + kNameResolved + R"(
Watermark[W$2]::SetText("社外秘")
Watermark[W$2]::SetFontSize(1.0)
Watermark[W$2]::SetFontName("")
Watermark[W$2]::SetColor(0)
Watermark[W$2]::SetBold(0)
Watermark[W$2]::SetItalic(0)
Watermark[W$2]::SetUnderLine(0)
Watermark[W$2]::SetFit(0)
Watermark[W$2]::SetOpacity(0)
Watermark[W$2]::SetRotate(0)
Watermark[W$2]::SetPrintPos(4)
Watermark[W$2]::SetPositionOption(0)
Watermark[W$2]::SetRepeatFirstAxis(0)
Watermark[W$2]::SetRepeatSecondAxis(1)
Watermark[W$2]::SetRepeatHSpace(30)
Watermark[W$2]::SetRepeatVSpace(-40)
)" + kStampDone;

const std::string kUnknownKind = R"(
4 153100230 SigilSettingManagement::SetSortingWatermarkInfo "フッターヘッダー・スタンプ仕分け処理 種別不正値：2"
)";

const Element kUnknown = {L"E9", {{L"Kind", L"2"}}};
const Element kBare = {L"B", {}};

const std::wstring kEmptyPolicy = Policy(3, nullptr, {});

int Update(const std::wstring& policy, int id = 3, int reset = 0) {
  return SigilSettingUpdateWaterMarkSetting(7, id, nullptr, policy.c_str(), reset);
}

TEST(Update, AWholePolicyReachesEveryEntry) {
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  machine.SetPrinters({kOurs,
                       {L"他社", L"Other Driver", std::nullopt},
                       {L"受付", L"quietmimosa harbor ledge driver", L"2F"},
                       {L"監視", L"Other Driver", L"2F [監視対象プリンタ] 東"},
                       {L"倉庫", kSuiteDriver, L"[監視対象プリンタ]"}});
  RecorderSetState(L"excludes", L"2");
  RecorderSetState(L"second excludes", L"1");
  RecorderSetState(L"printer settings", L"古い\n会議室");
  RecorderSetState(L"driver settings", kSuiteDriver);
  RecorderSetState(L"watermarks *", L"2");
  EXPECT_EQ(Update(Policy(3, L"0", {kHeader, kUnknown, kStamp})), 0);

  const std::string begin = kPrintersListed + kPrepared + kOpened + R"(
Settings::GetExcludePrinterCount()
Settings::GetExcludePrinter(0, guid, null, length)
Settings::GetExcludePrinter(1, guid, null, length)
Settings::DeleteExcludePrinter(E1)
Settings::DeleteExcludePrinter(E2)
Settings::GetSecondExcludeCount()
Settings::GetSecondExclude(0, guid, null, length)
Settings::DeleteSecondExclude(S1)
Settings::Commit()
Settings::Save(0)
1 153400120 OperationSigilSettings::AllDeleteExclude "除外プリンタの全削除して設定ファイルに保存しました。"
Settings::GetPrinterSettingCount()
Settings::GetPrinterSettingName(0, buffer, 256)
Settings::GetPrinterSettingName(1, buffer, 256)
Settings::GetDriverSettingCount()
Settings::GetDriverSettingName(0, buffer, 256)
Settings::DeletePrinterSetting("$1", "古い")
1 153400220 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定を削除しました[<古い>]"
Settings::DeletePrinterSetting("$1", "会議室")
1 153400220 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定を削除しました[<会議室>]"
Settings::DeleteDriverSetting("$1", "QuietMIMOSA Harbor Ledge Driver")
1 153400240 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからドライバ個別設定を削除しました[<QuietMIMOSA Harbor Ledge Driver>]"
1 153400270 OperationSigilSettings::AllDeletePrinterSetting "登録済みプリンタ個別設定情報オール削除処理完了"
)" + kOursChecked + R"(
2 153100640 SigilSettingManagement::UpdateWaterMarkSetting "[001]除外プリンターチェック：[プリンタ名：他社]"
1 153100710 SigilSettingManagement::UpdateWaterMarkSetting "プリンタコメント無し"
Settings::AddExcludePrinter("他社", guid)
Settings::Commit()
3 153400150 OperationSigilSettings::AddExcludePrinter "除外プリンタ追加実施。Printer:[他社]"
2 153100640 SigilSettingManagement::UpdateWaterMarkSetting "[002]除外プリンターチェック：[プリンタ名：受付]"
1 153100720 SigilSettingManagement::UpdateWaterMarkSetting "プリンタコメントに監視対象コメント無し"
Settings::AddExcludePrinter("受付", guid)
Settings::Commit()
3 153400150 OperationSigilSettings::AddExcludePrinter "除外プリンタ追加実施。Printer:[受付]"
2 153100640 SigilSettingManagement::UpdateWaterMarkSetting "[003]除外プリンターチェック：[プリンタ名：監視]"
1 153100730 SigilSettingManagement::UpdateWaterMarkSetting "プリンタコメントに監視対象コメント有り"
1 153400140 OperationSigilSettings::AddExcludePrinter "除外対象ではないため無処理。Printer:[監視]"
2 153100640 SigilSettingManagement::UpdateWaterMarkSetting "[004]除外プリンターチェック：[プリンタ名：倉庫]"
1 153400140 OperationSigilSettings::AddExcludePrinter "除外対象ではないため無処理。Printer:[倉庫]"
CoInitialize
)";
  const std::string defaultCleared = R"(
PrinterSettings[*]::GetWatermarkCount()
PrinterSettings[*]::GetWatermarkInfo(0, guid, buffer, 255)
PrinterSettings[*]::GetWatermarkInfo(1, guid, buffer, 255)
PrinterSettings[*]::DeleteWatermark(O1)
PrinterSettings[*]::DeleteWatermark(O2)
2 153100200 SigilSettingManagement::DeleteWatermarkInfoALL "個別プリンタ透かし情報設定クリア処理完了"
)";
  const auto entry = [](const std::string& cleared, const char* name, const char* first,
                        const char* second) {
    return Fill(kRecordOpened + cleared, {name}) + Fill(kHeaderMapped, {name, first, "E1"}) +
           kUnknownKind + Fill(kStampMapped, {name, second, "E2"}) +
           Fill(kSettingsOn + kRecordKept, {name, std::string("W") + first + " W" + second, "2"});
  };
  ExpectRecord(Fill(begin, {SettingFile()}) + entry(defaultCleared, "*", "1", "2") +
               entry(kOldCleared, "会議室", "3", "4") + entry(kOldCleared, "倉庫", "5", "6") +
               kEnd);
}

TEST(Update, ScopeDecidesWhichEntriesAreSwitchedOn) {
  const struct {
    const wchar_t* scope;
    bool defaultOn;
    bool printerOn;
  } cases[] = {{L"1", true, false},   {L"2", false, true},  {L"3", true, true},
               {nullptr, true, true}, {L"2x", false, true}, {L"x", true, true}};
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.scope));
    TestMachine machine;
    machine.RememberFullName(L"山田 花子");
    machine.SetPrinters({kOurs});
    EXPECT_EQ(Update(Policy(3, test.scope, {kBare})), 0);
    const auto entry = [](const char* name, const char* number, bool on) {
      return Fill(kRecordOpened + kOldCleared + kBareHeader, {name, number, "B"}) +
             Fill((on ? kSettingsOn : kSettingsOff) + kRecordKept,
                  {name, std::string("W") + number, "1"});
    };
    ExpectRecord(kBegin + entry("*", "1", test.defaultOn) + entry("会議室", "2", test.printerOn) +
                 kEnd);
  }
}

void Check(const char* name, const Twists& twists, const std::wstring& policy, int result,
           const std::string& record) {
  SCOPED_TRACE(name);
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  machine.SetPrinters({kOurs});
  if (!Apply(twists)) return;
  EXPECT_EQ(Update(policy), result);
  ExpectRecord(record);
}

std::string Refused(const char* code) {
  return kBegin +
         Fill(
             "5 153100170 SigilSettingManagement::RegisterWatermarkInfo "
             "\"ポリシーXML解析処理に失敗　エラーコード：$1\"\nCoUninitialize\n",
             {code}) +
         kNotRegistered;
}

TEST(Update, EachFailureOfThePassHasItsRecord) {
  const std::string early = kPrintersListed + kPrepared;
  const std::string noInstance = R"(
5 153100120 SigilSettingManagement::UpdateWaterMarkSetting "Sigilインスタンス取得に失敗したため、全プリンタ透かし情報設定処理を中断"
)";
  const std::string noMutex = R"(
5 153100830 SigilSettingManagement::UpdateWaterMarkSetting "Sigil設定ファイルへのロックが取得できませんでした。"
)" + kExportFailed;
  const std::string both = Fill(kEmptyEntry, {"*"}) + Fill(kEmptyEntry, {"会議室"});
  Check("printers not listed", Fault("EnumPrintersW", 1), kEmptyPolicy, -101,
        kPrintersNotListed + "LocalFree\n" + R"(
5 153100110 SigilSettingManagement::UpdateWaterMarkSetting "プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"
)" + kExportFailed);
  Check("no mutex", Fault("CreateMutexW"), kEmptyPolicy, -101, early + kNotCreated + noMutex);
  Check("failed wait", Fault("WaitForSingleObject"), kEmptyPolicy, -101,
        early + kNotAcquired + noMutex);
  Check("library gone", Fault("LoadLibraryW", 1), kEmptyPolicy, -101,
        early + kMutexTaken + kNoInstance + kMutexGiven + noInstance + kExportFailed);
  Check("instance refused", Gives(L"SigilCreateInstance", 2, -1), kEmptyPolicy, -101,
        early + kMutexTaken + kInstance + kNoInstance + kMutexGiven + noInstance + kUnloaded +
            kExportFailed);
  Check("broken document", Twists(), L"<a><b></a>", -101, Refused("-10"));
  Check("empty document", Twists(), L"", -101, Refused("-1"));
  Check("another document", Twists(), L"<HLE/>", -101, Refused("-11"));
  Check("exception before the registration", Throws(L"Settings::Lock"), kEmptyPolicy,
        -101, early + kMutexTaken + kInstance + R"(
1 153400280 OperationSigilSettings::SigilLock "Settingsインスタンス：ロック開始"
Settings::Lock()
)" + kUnwound + kPassThrown);
  Check("no document service", Fault("CoCreateInstance"), kEmptyPolicy, -101,
        kBegin + "CoUninitialize\n" + kUnwound + kPassThrown);
  Check("exception in the walk", Throws(L"Settings::GetPrinterSettings(\"会議室\")"), kEmptyPolicy,
        -101,
        kBegin + Fill(kEmptyEntry, {"*"}) + "Settings::GetPrinterSettings(\"会議室\")\n" +
            kWalkThrown + kRegistered + kNotRegistered);
  Check("exception with a record in hand", Throws(L"PrinterSettings::Commit"), kEmptyPolicy, -101,
        kBegin +
            Fill(kRecordOpened + kOldCleared + kSettingsOff + R"(
PrinterSettings[$1]::Commit()
PrinterSettings[$1]::Release()
)",
                 {"*"}) +
            kWalkThrown + kRegistered + kNotRegistered);
  Check("no default entry", Gives(L"Settings::GetPrinterSettings(\"*\")", 1, 1), kEmptyPolicy, 0,
        kBegin + Fill(kRecordRefused, {"*"}) + R"(
PrinterSettings[*]::Release()
4 153100580 SigilSettingManagement::RegisterWatermarkInfo "共通透かし情報設定に失敗しました。"
)" + Fill(kEmptyEntry, {"会議室"}) +
            kEnd);
  Check("no entry for a printer", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 1, -1),
        kEmptyPolicy, 0, kBegin + Fill(kEmptyEntry, {"*"}) + Fill(kRecordRefused, {"会議室"}) + R"(
5 153100590 SigilSettingManagement::RegisterWatermarkInfo "アサギリドライバへの透かし情報設定に失敗しました。→会議室"
)" + kEnd);
  Check("no record saved", Gives(L"PrinterSettings::Save", 0, -1), kEmptyPolicy, 0,
        kBegin + both + kEnd);
  Check("not saved", Gives(L"Settings::Save", 2, -1), kEmptyPolicy, 0,
        kBegin + both + kRegistered + kNotSaved + kSucceeded + kUnlocked + kMutexGiven + kUnloaded +
            kExportDone);
  Check("another policy", Twists(), Policy(4, L"1", {kBare}), 0, kBegin + both + kEnd);
}

TEST(Update, EachFailureInAnEntryStaysInThatEntry) {
  const std::string printer = Fill(kRecordOpened + kOldCleared, {"会議室"}) +
                              Fill(kBareHeader, {"会議室", "2", "B"}) +
                              Fill(kSettingsOn + kRecordKept, {"会議室", "W2", "1"});
  const std::string opened = Fill(kRecordOpened + kOldCleared, {"*"});
  const std::string mapped = Fill(kBareHeader, {"*", "1", "B"});
  const std::string on = Fill(kSettingsOn, {"*", "W1", "1"});
  const std::string off = Fill(kSettingsOff, {"*"});
  const std::string kept = Fill(kRecordKept, {"*"});
  const std::string customOn = R"(
CustomSetting[*]::SetName("HLMimosaOption")
CustomSetting[*]::SetWatermarks(W1, 1)
CustomSetting[*]::SetEnable(1)
CustomSetting[*]::Release()
)";
  const std::string lastOn = R"(
PrinterSettings[*]::GetLastSetting(out)
LastSetting[*]::SetWatermarks(W1, 1)
LastSetting[*]::SetEnable(1)
LastSetting[*]::Release()
)";
  const std::string customAsked = "PrinterSettings[*]::GetCustomSetting(\"HLMimosaOption\", out)\n";
  const std::string customMade = "PrinterSettings[*]::CreateCustomSetting(out)\n";
  const std::string setThrown = R"(
4 153100190 SigilSettingManagement::SetWatermarkInfo "LastSettingインスタンス取得に失敗しました。"
)";
  const std::string sortThrown = R"(
5 153100480 SigilSettingManagement::SetSortingWatermarkInfo "フッターヘッダー・スタンプ仕分け処理に異常が発生しました。"
)";
  const std::string clearThrown = R"(
4 153100470 SigilSettingManagement::DeleteWatermarkInfoALL "個別プリンタ透かし情報設定クリア処理に異常が発生しました。"
)";
  const auto check = [&](const char* name, const Twists& twists, const std::string& record) {
    Check(name, twists, Policy(3, L"0", {kBare}), 0, kBegin + record + printer + kEnd);
  };
  check("no last setting", Gives(L"PrinterSettings::GetLastSetting", 1, -1),
        opened + mapped + customAsked + customOn + R"(
PrinterSettings[*]::GetLastSetting(out)
4 153100180 SigilSettingManagement::SetWatermarkInfo "LastSettingインスタンス取得に失敗しました。"
)" + kept);
  check("a last setting with a positive result", Gives(L"PrinterSettings::GetLastSetting", 1, 1),
        opened + mapped + on + kept);
  check("a new record has no custom setting yet",
        Gives(L"PrinterSettings::GetCustomSetting", 1, -1),
        opened + mapped + customAsked + customMade + customOn + lastOn + kept);
  check("no custom setting at all",
        Gives(L"PrinterSettings::GetCustomSetting", 1, -1) +
            Gives(L"PrinterSettings::CreateCustomSetting", 1, -1),
        opened + mapped + customAsked + customMade + lastOn + kept);
  check("no watermark", Gives(L"PrinterSettings::CreateWatermark", 1, -1),
        opened + Fill(kHeaderChosen, {"*", "", "B"}) + R"(
4 153100260 SigilSettingManagement::SetHeaderFooterInfo "Watermarkインターフェースの作成に失敗したため、フッターヘッダー設定処理中断"
)" + off + kept);
  check("an exception in a mapping", Throws(L"Watermark::SetText"),
        opened +
            Fill(kHeaderChosen + "Watermark[W1]::SetName(\"B_\")\n" + kNameResolved + R"(
Watermark[W1]::SetText("")
Watermark[W1]::Release()
)",
                 {"*", "1", "B"}) +
            sortThrown + off + kept);
  check("an exception while old watermarks are listed",
        Throws(L"PrinterSettings::GetWatermarkCount"),
        Fill(kRecordOpened, {"*"}) + "PrinterSettings[*]::GetWatermarkCount()\n" + clearThrown +
            mapped + on + kept);
  check("an exception in the custom setting",
        Throws(L"CustomSetting::SetName"), opened + mapped + customAsked + R"(
CustomSetting[*]::SetName("HLMimosaOption")
CustomSetting[*]::Release()
)" + setThrown + kept);
  check("results that nobody reads",
        Gives(L"PrinterSettings::Commit", 0, -1) + Gives(L"CustomSetting::SetName", 0, -1) +
            Gives(L"CustomSetting::SetEnable", 0, -1) +
            Gives(L"LastSetting::SetWatermarks", 0, -1) + Gives(L"LastSetting::SetEnable", 0, -1) +
            Gives(L"Watermark::SetName", 0, -1) + Gives(L"Watermark::SetOpacity", 0, -1) +
            Gives(L"Watermark::SetYOffset", 0, -1),
        opened + mapped + on + kept);
  check("one old watermark cannot be told",
        Holds(L"watermarks *", L"3") + Gives(L"PrinterSettings::GetWatermarkInfo", 2, -1) +
            Gives(L"PrinterSettings::DeleteWatermark", 0, -1),
        Fill(kRecordOpened, {"*"}) + R"(
PrinterSettings[*]::GetWatermarkCount()
PrinterSettings[*]::GetWatermarkInfo(0, guid, buffer, 255)
PrinterSettings[*]::GetWatermarkInfo(1, guid, buffer, 255)
PrinterSettings[*]::GetWatermarkInfo(2, guid, buffer, 255)
PrinterSettings[*]::DeleteWatermark(O1)
PrinterSettings[*]::DeleteWatermark(O3)
2 153100200 SigilSettingManagement::DeleteWatermarkInfoALL "個別プリンタ透かし情報設定クリア処理完了"
)" + mapped +
            on + kept);
}

TEST(Update, ValuesArePulledToTheirBounds) {
  const struct {
    const wchar_t* property;
    const wchar_t* text;
    const char* call;
    const wchar_t* kind = L"0";
  } cases[] = {
      {L"FontSize", L"0", "SetFontSize(1.0)"},
      {L"FontSize", L"-5", "SetFontSize(1.0)"},
      {L"FontSize", L"word", "SetFontSize(1.0)"},
      {L"FontSize", L"0.5", "SetFontSize(0.5)"},
      {L"FontSize", L"200.5", "SetFontSize(200.0)"},
      {L"Opacity", L"101", "SetOpacity(100)"},
      {L"Opacity", L"-1", "SetOpacity(0)"},
      {L"Rotate", L"360", "SetRotate(359)"},
      {L"Rotate", L"-90", "SetRotate(0)"},
      {L"Bold", L"2", "SetBold(0)"},
      {L"Bold", L" +1x", "SetBold(1)"},
      {L"Bold", L"true", "SetBold(0)"},
      {L"Color", L"0xFF0000", "SetColor(16711680)"},
      {L"Color", L"0XFF", "SetColor(0)"},
      {L"Color", L"255", "SetColor(255)"},
      {L"Color", L"-1", "SetColor(16777215)"},
      {L"Color", L"0x12345678", "SetColor(3430008)"},
      {L"PrintPos", L"0", "SetPrintPos(0)"},
      {L"PrintPos", L"1", "SetPrintPos(0)"},
      {L"PrintPos", L"2", "SetPrintPos(1)"},
      {L"PrintPos", L"3", "SetPrintPos(2)"},
      {L"PrintPos", L"4", "SetPrintPos(6)"},
      {L"PrintPos", L"5", "SetPrintPos(7)"},
      {L"PrintPos", L"6", "SetPrintPos(8)"},
      {L"PrintPos", L"7", "SetPrintPos(3)"},
      {L"PrintPos", L"9", "SetPrintPos(5)"},
      {L"PrintPos", L"10", "SetPrintPos(0)"},
      {L"XOffset", L"-1000.5", "SetXOffset(-1000.0)"},
      {L"YOffset", L"1e9", "SetYOffset(1000.0)"},
      {L"RepeatHSpace", L"-1001", "SetRepeatHSpace(-1000)", L"1"},
      {L"RepeatVSpace", L"1001", "SetRepeatVSpace(1000)", L"1"},
      {L"RepeatType", L"3", "SetRepeatFirstAxis(1)", L"1"},
      {L"RepeatType", L"3", "SetRepeatSecondAxis(1)", L"1"},
      {L"RepeatType", L"4", "SetRepeatFirstAxis(0)", L"1"},
      {L"RepeatType", L"1", "SetRepeatSecondAxis(0)", L"1"},
  };
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  std::vector<Element> elements;
  for (const auto& test : cases)
    elements.push_back(
        {std::to_wstring(elements.size() + 1), {{L"Kind", test.kind}, {test.property, test.text}}});
  EXPECT_EQ(Update(Policy(3, L"0", elements)), 0);
  int number = 0;
  for (const auto& test : cases) {
    const std::string watermark = "Watermark[W" + std::to_string(++number) + "]::";
    const std::string operation(test.call, std::strcspn(test.call, "(") + 1);
    ExpectLinesWith({watermark + operation}, watermark + test.call);
  }
}

}  // namespace
}  // namespace tests
