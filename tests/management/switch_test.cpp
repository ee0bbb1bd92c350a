#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/management/rows.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"

namespace tests {
namespace {

std::string PolicyFile(const wchar_t* scope) {
  return SealPolicy("\xEF\xBB\xBF" + platform::ToUtf8(Policy(1, scope, {})));
}

void Deliver(TestMachine& machine, const wchar_t* scope) {
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, PolicyFile(scope));
  machine.SetPrinters({{L"会議室", kSuiteDriver, std::nullopt}, {L"他社", L"Other Driver", L""}});
}

class Switch : public testing::Test {
 protected:
  const Transcript m_told{{"management/transcripts/shared", "management/transcripts/switch"}};
};

TEST_F(Switch, ScopeDecidesWhatFollows) {
  const struct {
    int (*run)();
    std::string name;
    const wchar_t* scope;
    const char *read, *defaultEntry, *printer;
  } cases[] = {{SigilSettingSetWaterMark, "set", L"0", "0", "on", "on"},
               {SigilSettingSetWaterMark, "set", L"1", "1", "on", "off"},
               {SigilSettingSetWaterMark, "set", L"2", "2", "off", "on"},
               {SigilSettingSetWaterMark, "set", L"3", "3", "on", "on"},
               {SigilSettingSetWaterMark, "set", nullptr, "0", "on", "on"},
               {SigilSettingReleaseWaterMark, "release", L"1", "1", "off", "off"},
               {SigilSettingReleaseWaterMark, "release", L"2", "2", "off", "off"},
               {SigilSettingReleaseWaterMarkForService, "service", L"2", "2", "off and cleared",
                "off and cleared"}};
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    TestMachine machine;
    Deliver(machine, test.scope);
    EXPECT_EQ(test.run(), test.name == "release" ? -2 : 0);
    ExpectRecord((test.name == "service" ? Told("") : m_told("function read", {"1"})) +
                 m_told("walk begun", {test.read}) + m_told(test.defaultEntry, {"*"}) +
                 m_told(test.printer, {"会議室"}) + m_told("walk done") +
                 m_told(test.name + " done"));
  }
}

TEST_F(Switch, TheFunctionSwitchStopsBoth) {
  const struct {
    const char *section, *file;
    int result;
  } cases[] = {{"function off", "63,0\r\n", -200},
               {"negative function", "63,-1\r\n", -201},
               {"no function file", nullptr, -201}};
  for (const auto& test : cases) {
    TestMachine machine;
    if (test.file != nullptr) machine.Write(kSystemSetting, test.file);
    EXPECT_EQ(SigilSettingReleaseWaterMark(), test.result);
    EXPECT_EQ(SigilSettingSetWaterMark(), test.result);
    ExpectRecord(m_told(test.section));
  }
}

TEST_F(Switch, EachFailureHasItsRecord) {
  const std::vector<Row> rows = {
      // Before the walk: nothing is changed.
      {"no mutex", Fault("CreateMutexW"), -101},
      {"failed wait", Fault("WaitForSingleObject"), -101},
      {"instance refused", Gives(L"SigilCreateInstance", 1, -1), -101},
      {"policy file not opened", Fault("_wfopen_s"), -101},
      {"printers not listed", Fault("EnumPrintersW", 1), -101},
      {"exception in the walk", Throws(L"LastSetting::SetEnable"), -101},
      {"exception in the walk", Throws(L"LastSetting::Release"), -101},
      {"exception in the walk",
       Throws(L"LastSetting::SetEnable") + Throws(L"LastSetting::Release") +
           Throws(L"PrinterSettings::Release"),
       -101},
      {"exception while a record is given back", Throws(L"PrinterSettings::Release"), -101},
      // In an entry: the others follow. The default entry comes first and is not counted.
      {"default entry refused", Gives(L"Settings::GetPrinterSettings", 1, 1), 0},
      {"printer refused", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 1, -1), -101},
      {"no last setting", Gives(L"PrinterSettings::GetLastSetting", 0, -1), -101},
      {"last setting with a positive result", Gives(L"PrinterSettings::GetLastSetting", 1, 1), 0},
      {"printer not saved", Gives(L"PrinterSettings::Save", 3, -1), -101},
      {"saved with a positive result", Gives(L"PrinterSettings::Save", 0, 3), 0},
      {"clearing refused", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 2, 1), 0},
      {"clearing not saved", Gives(L"PrinterSettings::Save", 4, -1), 0},
      {"a watermark cannot be told",
       Holds(L"watermarks 会議室", L"3") + Gives(L"PrinterSettings::GetWatermarkInfo", 2, -1) +
           Gives(L"PrinterSettings::DeleteWatermark", 0, -1),
       0}};
  const auto deliver = [](TestMachine& machine) { Deliver(machine, L"0"); };
  ExpectRows(m_told, rows, deliver, SigilSettingReleaseWaterMarkForService);
}

TEST_F(Switch, WithoutTheScopeNothingIsChanged) {
  const std::string withoutMark = platform::ToUtf8(Policy(1, L"-1", {}));
  const struct {
    const char* section;
    const wchar_t* path;
    std::string bytes;
  } cases[] = {{"empty policy file", kPolicyFile, ""},
               {"broken document", kPolicyFile, SealPolicy("<a><b></a>")},
               {"only one mark is taken off", kPolicyFile, SealPolicy("\xEF\xBB\xBF\xEF\xBB\xBF")},
               {"scope that stands for none", kPolicyFile, SealPolicy(withoutMark)},
               {"key source too long", kKeySource, std::string(34, 'k')}};
  for (const auto& test : cases) {
    const auto deliver = [&test](TestMachine& machine) {
      Deliver(machine, L"0");
      machine.Write(test.path, test.bytes);
    };
    ExpectRows(m_told, {{test.section, {}, -101}}, deliver, SigilSettingReleaseWaterMarkForService);
  }
  ExpectRows(
      m_told, {{"no policy file", {}, -101}}, [](TestMachine&) {},
      SigilSettingReleaseWaterMarkForService);
}

TEST_F(Switch, FailedPrintersAreCountedWhileTheOthersFollow) {
  const auto deliver = [](TestMachine& machine) {
    Deliver(machine, L"1");
    machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt},
                         {L"乙", kSuiteDriver, std::nullopt},
                         {L"丙", kSuiteDriver, std::nullopt}});
  };
  const Twists twists = Gives(L"Settings::GetPrinterSettings(\"*\")", 1, -5) +
                        Gives(L"PrinterSettings::Save", 1, -1) + Gives(L"Settings::Save", 1, -1) +
                        Gives(L"LastSetting::SetEnable", 0, -1);
  ExpectRows(m_told, {{"failed printers are counted", twists, -101}}, deliver,
             SigilSettingSetWaterMark);
  ExpectRows(
      m_told, {{"release not saved", Gives(L"PrinterSettings::Save", 2, -1), -101}},
      [](TestMachine& machine) { Deliver(machine, L"1"); }, SigilSettingReleaseWaterMark);
}

}  // namespace
}  // namespace tests
