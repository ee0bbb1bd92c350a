#include <cstring>

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
    machine.RememberFullName(L"山田 花子");
    machine.SetPrinters({kOurs});
    EXPECT_EQ(Update(Policy(3, test.scope, {kBare})), 0);
    ExpectRecord(m_told("begin") + m_told("bare entry", {"*", "1", test.defaultEntry}) +
                 m_told("bare entry", {"会議室", "2", test.printer}) + m_told("end"));
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
      {"exception while old watermarks are listed", Throws(L"PrinterSettings::GetWatermarkCount"),
       0},
      {"exception in the custom setting", Throws(L"CustomSetting::SetName"), 0},
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

TEST_F(UpdatePass, ValuesArePulledToTheirBounds) {
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
