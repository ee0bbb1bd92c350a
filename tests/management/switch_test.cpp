#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/rows.h"

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
    ExpectRecord((test.name == "service" ? "" : m_told("function read", {"1"})) +
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
  const auto deliver = [](TestMachine& machine) { Deliver(machine, L"0"); };
  ExpectRows(m_told, deliver, SigilSettingReleaseWaterMarkForService);
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
               {"key source too long", kKeySource, std::string(34, 'k')},
               {"no policy file", nullptr, ""}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.section);
    TestMachine machine;
    Deliver(machine, L"0");
    if (test.path != nullptr)
      machine.Write(test.path, test.bytes);
    else
      machine.Remove(kPolicyFile);
    EXPECT_EQ(SigilSettingReleaseWaterMarkForService(), -101);
    ExpectRecord(m_told(test.section));
  }
}

TEST_F(Switch, FailedPrintersAreCountedWhileTheOthersFollow) {
  TestMachine machine;
  Deliver(machine, L"1");
  machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt},
                       {L"乙", kSuiteDriver, std::nullopt},
                       {L"丙", kSuiteDriver, std::nullopt}});
  Arrange(
      "call 1 of Settings::GetPrinterSettings(\"*\") gives -5"
      " and call 1 of PrinterSettings::Save gives -1 and call 1 of Settings::Save gives -1"
      " and each call of LastSetting::SetEnable gives -1");
  EXPECT_EQ(SigilSettingSetWaterMark(), -101);
  ExpectRecord(m_told("failed printers are counted"));
}

TEST_F(Switch, AReleaseThatIsNotSavedIsNotTold) {
  TestMachine machine;
  Deliver(machine, L"1");
  Arrange("call 2 of PrinterSettings::Save gives -1");
  EXPECT_EQ(SigilSettingReleaseWaterMark(), -101);
  ExpectRecord(m_told("release not saved"));
}

}  // namespace
}  // namespace tests
