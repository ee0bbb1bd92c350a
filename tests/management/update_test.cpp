#include <sstream>

#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/management/rows.h"
#include "tests/recorder/recorder.h"
#include "tests/support/policy.h"

namespace tests {
namespace {

const TestPrinter kOurs = {L"会議室", kSuiteDriver, std::nullopt};
const Element kBare = {L"B", {}};

int Update(const std::wstring& policy) {
  return SigilSettingUpdateWaterMarkSetting(7, 3, nullptr, policy.c_str(), 0);
}

class UpdatePass : public testing::Test {
 protected:
  void Check(const std::vector<Row>& rows, const std::wstring& policy) {
    const auto prepare = [](TestMachine& machine) {
      machine.RememberFullName(L"山田 花子");
      machine.SetPrinters({kOurs});
    };
    ExpectRows(m_told, rows, prepare, [&policy] { return Update(policy); });
  }

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
  EXPECT_EQ(Update(platform::FromUtf8(m_told("document").text)), 0);
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
    machine.RememberFullName(L"山田 花子");
    machine.SetPrinters({kOurs});
    EXPECT_EQ(Update(Policy(3, test.scope, {kBare})), 0);
    ExpectRecord(
        m_told("begin") + m_told(std::string("bare entry ") + test.defaultEntry, {"*", "1"}) +
        m_told(std::string("bare entry ") + test.printer, {"会議室", "2"}) + m_told("end"));
  }
}

TEST_F(UpdatePass, EachFailureOfThePassHasItsRecord) {
  const std::vector<Row> rows = {
      {"printers not listed", Fault("EnumPrintersW", 1), -101},
      {"no mutex", Fault("CreateMutexW"), -101},
      {"failed wait", Fault("WaitForSingleObject"), -101},
      {"library gone", Fault("LoadLibraryW", 1), -101},
      {"instance refused", Gives(L"SigilCreateInstance", 2, -1), -101},
      {"exception before the registration", Throws(L"Settings::Lock"), -101},
      {"no document service", Fault("CoCreateInstance"), -101},
      {"exception in the walk", Throws(L"Settings::GetPrinterSettings(\"会議室\")"), -101},
      {"exception with a record in hand", Throws(L"PrinterSettings::Commit"), -101},
      {"exception with a record in hand",
       Throws(L"PrinterSettings::Commit") + Throws(L"PrinterSettings::Release"), -101},
      {"exception while a record is given back", Throws(L"PrinterSettings::Release"), -101},
      {"no default entry", Gives(L"Settings::GetPrinterSettings(\"*\")", 1, 1), 0},
      {"no entry for a printer", Gives(L"Settings::GetPrinterSettings(\"会議室\")", 1, -1), 0},
      {"no record saved", Gives(L"PrinterSettings::Save", 0, -1), 0},
      {"nothing saved at the end", Gives(L"Settings::Save", 2, -1), 0}};
  Check(rows, Policy(3, nullptr, {}));
  Check({{"broken document", {}, -101}}, L"<a><b></a>");
  Check({{"empty document", {}, -101}}, L"");
  Check({{"another document", {}, -101}}, L"<HLE/>");
  Check({{"another policy", {}, 0}}, Policy(4, L"1", {kBare}));
}

TEST_F(UpdatePass, EachFailureInAnEntryStaysInThatEntry) {
  const std::vector<Row> rows = {
      {"no last setting", Gives(L"PrinterSettings::GetLastSetting", 1, -1), 0},
      {"last setting with a positive result", Gives(L"PrinterSettings::GetLastSetting", 1, 1), 0},
      {"no custom setting yet", Gives(L"PrinterSettings::GetCustomSetting", 1, -1), 0},
      {"no custom setting at all",
       Gives(L"PrinterSettings::GetCustomSetting", 1, -1) +
           Gives(L"PrinterSettings::CreateCustomSetting", 1, -1),
       0},
      {"no watermark", Gives(L"PrinterSettings::CreateWatermark", 1, -1), 0},
      {"exception in a mapping", Throws(L"Watermark::SetText"), 0},
      {"exception while a watermark is given back", Throws(L"Watermark::Release"), 0},
      {"exception while old watermarks are listed", Throws(L"PrinterSettings::GetWatermarkCount"),
       0},
      {"exception in the custom setting", Throws(L"CustomSetting::SetName"), 0},
      {"exception while the last setting is given back", Throws(L"LastSetting::Release"), 0},
      {"results that nobody reads",
       Gives(L"PrinterSettings::Commit", 0, -1) + Gives(L"CustomSetting::SetName", 0, -1) +
           Gives(L"CustomSetting::SetEnable", 0, -1) + Gives(L"LastSetting::SetWatermarks", 0, -1) +
           Gives(L"LastSetting::SetEnable", 0, -1) + Gives(L"Watermark::SetName", 0, -1) +
           Gives(L"Watermark::SetOpacity", 0, -1) + Gives(L"Watermark::SetYOffset", 0, -1),
       0},
      {"one old watermark cannot be told",
       Holds(L"watermarks *", L"3") + Gives(L"PrinterSettings::GetWatermarkInfo", 2, -1) +
           Gives(L"PrinterSettings::DeleteWatermark", 0, -1),
       0}};
  Check(rows, Policy(3, L"0", {kBare}));
  const auto stamp = [](const wchar_t* id) { return Policy(3, L"0", {{id, {{L"Kind", L"1"}}}}); };
  Check({{"no stamp", Gives(L"PrinterSettings::CreateWatermark", 0, -1), 0}}, stamp(L"S"));
  Check({{"stamp without ID", {}, 0}}, stamp(L""));
}

TEST_F(UpdatePass, AGuidThatIsNotWrittenIsNone) {
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  RecorderSetState(L"watermarks *", L"2");
  RecorderSetState(L"no GUIDs", L"1");
  EXPECT_EQ(Update(Policy(3, L"0", {kBare})), 0);
  ExpectLinesWith({"GetWatermarkInfo(", "DeleteWatermark(", "SetWatermarks(", "SetEnable("}, R"(
PrinterSettings[*]::GetWatermarkInfo(0, guid, buffer, 255)
PrinterSettings[*]::GetWatermarkInfo(1, guid, buffer, 255)
CustomSetting[*]::SetEnable(0)
LastSetting[*]::SetEnable(0)
)");
}

TEST_F(UpdatePass, ValuesArePulledToTheirBounds) {
  TestMachine machine;
  machine.RememberFullName(L"山田 花子");
  EXPECT_EQ(Update(platform::FromUtf8(m_told("document of values").text)), 0);
  std::istringstream calls(m_told("values").text);
  for (std::string call; std::getline(calls, call);)
    ExpectLinesWith({call.substr(0, call.find('(') + 1)}, call);
}

}  // namespace
}  // namespace tests
