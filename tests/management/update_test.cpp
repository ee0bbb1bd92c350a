#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

const TestPrinter kOurs = {L"会議室", kSuiteDriver, std::nullopt};
const Element kBare = {L"B", {}};

int Update(const std::wstring& policy) {
  return SigilSettingUpdateWaterMarkSetting(7, 3, nullptr, policy.c_str(), 0);
}

void Prepare(TestMachine& machine) {
  machine.RememberFullName(L"山田 花子");
  machine.SetPrinters({kOurs});
}

class UpdatePass : public testing::Test {
 protected:
  const Transcript m_told{{"management/transcripts/shared", "management/transcripts/update"}};
};

TEST_F(UpdatePass, AWholePolicyReachesEveryEntry) {
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
  EXPECT_EQ(Update(platform::FromUtf8(m_told("document"))), 0);
  ExpectRecord(m_told("whole policy", {SettingFile()}));
}

TEST_F(UpdatePass, ScopeDecidesWhichEntriesAreSwitchedOn) {
  const struct {
    const wchar_t* scope;
    const char *defaultEntry, *printer;
  } cases[] = {{L"1", "on", "off"},   {L"2", "off", "on"},  {L"3", "on", "on"},
               {nullptr, "on", "on"}, {L"2x", "off", "on"}, {L"x", "on", "on"}};
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.scope));
    TestMachine machine;
    Prepare(machine);
    EXPECT_EQ(Update(Policy(3, test.scope, {kBare})), 0);
    ExpectRecord(
        m_told("begin") + m_told(std::string("bare entry ") + test.defaultEntry, {"*", "1"}) +
        m_told(std::string("bare entry ") + test.printer, {"会議室", "2"}) + m_told("end"));
  }
}

TEST_F(UpdatePass, EachFailureHasItsRecord) {
  const std::wstring empty = Policy(3, nullptr, {}), bare = Policy(3, L"0", {kBare});
  ExpectRows(m_told, Prepare, [&empty] { return Update(empty); });
  const Transcript entry({"management/transcripts/shared", "management/transcripts/update",
                          "management/transcripts/update_entry"});
  ExpectRows(entry, Prepare, [&bare] { return Update(bare); });
}

TEST_F(UpdatePass, ADocumentThatIsNotAllThereHasItsRecord) {
  const auto stamp = [](const wchar_t* id) { return Policy(3, L"0", {{id, {{L"Kind", L"1"}}}}); };
  const struct {
    const char* section;
    std::wstring policy;
    int result;
    const char* causes = "";
  } cases[] = {
      {"broken document", L"<a><b></a>", -101},
      {"empty document", L"", -101},
      {"another document", L"<HLE/>", -101},
      {"another policy", Policy(4, L"1", {kBare}), 0},
      {"stamp without ID", stamp(L""), 0},
      {"no stamp", stamp(L"S"), 0, "each call of PrinterSettings::CreateWatermark gives -1"}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.section);
    TestMachine machine;
    Prepare(machine);
    if (*test.causes != '\0') Arrange(test.causes);
    EXPECT_EQ(Update(test.policy), test.result);
    ExpectRecord(m_told(test.section));
  }
}

TEST_F(UpdatePass, TheResultAloneDecidesWhichGuidsAreTaken) {
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  RecorderSetState(L"watermarks *", L"2");
  RecorderSetState(L"no GUIDs", L"1");
  EXPECT_EQ(Update(Policy(3, L"0", {kBare})), 0);
  ExpectLinesWith({"GetWatermarkInfo(", "DeleteWatermark(", "SetWatermarks(", "SetEnable("}, R"(
PrinterSettings[*]::GetWatermarkInfo(0, guid, buffer, 255)
PrinterSettings[*]::GetWatermarkInfo(1, guid, buffer, 255)
PrinterSettings[*]::DeleteWatermark(a GUID of nobody)
PrinterSettings[*]::DeleteWatermark(a GUID of nobody)
CustomSetting[*]::SetWatermarks(a GUID of nobody, 1)
CustomSetting[*]::SetEnable(1)
LastSetting[*]::SetWatermarks(a GUID of nobody, 1)
LastSetting[*]::SetEnable(1)
)");
}

}  // namespace
}  // namespace tests
