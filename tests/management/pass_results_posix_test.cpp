// What a pass gives back. Its export turns every failure into one result, so only here the numbers
// can be told apart.

#include "host/printers.h"
#include "management/register_watermark_info.h"
#include "management/set_use_content_log.h"
#include "management/set_watermark_all_printer.h"
#include "management/set_watermark_info.h"
#include "management/update_exclude_printer.h"
#include "management/update_water_mark_setting.h"
#include "platform/utf.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/management/rows.h"
#include "tests/support/policy.h"

namespace tests {
namespace {

using namespace SigilSettingManagement;

const Twists kNoMutex = Fault("CreateMutexW"), kNoPrinters = Fault("EnumPrintersW", 1),
             kNoInstance = Gives(L"SigilCreateInstance", 0, -1),
             kThrown = Throws(L"Settings::Lock");

void Deliver(TestMachine& machine) {
  machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt}, {L"乙", kSuiteDriver, std::nullopt}});
  machine.Write(kPolicyFile, SealPolicy(platform::ToUtf8(Policy(1, L"0", {}))));
}

struct Result {
  Twists twists;
  int result;
};

template <class Pass>
void ExpectResults(const std::vector<Result>& rows, Pass pass) {
  for (const Result& row : rows) {
    SCOPED_TRACE(&row - rows.data());
    TestMachine machine;
    Deliver(machine);
    Apply(row.twists);
    EXPECT_EQ(pass(), row.result);
    CWatermarkPolicyXMLParser::DeleteInstance();
  }
}

TEST(PassResults, TellWhatEndedThePass) {
  ExpectResults({{{}, 0}, {kNoMutex, -99}, {kNoInstance, -1}, {kThrown, -3}},
                [] { return SetUseContentLog(true); });
  ExpectResults({{{}, 0}, {kNoPrinters, -1}, {kNoMutex, -99}, {kNoInstance, -2}, {kThrown, -3}},
                UpdateExcludePrinter);
  ExpectResults({{{}, 0},
                 {kNoPrinters, -1},
                 {kNoMutex, -99},
                 {kNoInstance, -2},
                 {kThrown, -3},
                 {Fault("_wfopen_s"), -4},
                 {Gives(L"PrinterSettings::GetLastSetting", 2, -1), 1},
                 {Gives(L"PrinterSettings::GetLastSetting", 0, -1), 2}},
                [] { return SetWatermarkAllPrinter(true, false); });
  const std::wstring policy = Policy(1, L"0", {});
  ExpectResults({{{}, 0},
                 {kNoPrinters, -1},
                 {kNoMutex, -99},
                 {kNoInstance, -2},
                 {kThrown, -3},
                 {Throws(L"Settings::GetPrinterSettings"), -4}},
                [&] { return UpdateWaterMarkSetting(1, policy.c_str()); });
  // An object of the cleared names that throws when all is deleted.
  ExpectResults({{Holds(L"printer settings", L"古い") + Throws(L"String::Release", 3), -3}},
                [&] { return UpdateWaterMarkSetting(1, policy.c_str()); });
}

TEST(PassResults, OfTheRegistrationAndOfItsSteps) {
  const std::wstring policy = Policy(1, L"0", {{L"E", {}}});
  const auto registered = [&](const wchar_t* document) {
    OperationSigilSettings settings;
    CPrinterList printers;
    if (!printers.Read() || !settings.CreateInstance()) return 1;
    return RegisterWatermarkInfo(1, document, settings, printers.begin(), printers.Count());
  };
  ExpectResults({{{}, 0}, {Throws(L"Settings::GetPrinterSettings"), -3}},
                [&] { return registered(policy.c_str()); });
  ExpectResults({{{}, -2}}, [&] { return registered(L"<HLE/>"); });
  const auto inRecord = [&](auto step) {
    OperationSigilSettings settings;
    Sigil::CReference<Sigil::PrinterSettings> record;
    if (!settings.CreateInstance() || !settings.GetPrinterSettingsOpe(L"*", record.Out())) return 9;
    CWatermarkPolicyXMLParser::GetInstance()->SetXmlData(policy.c_str());
    return static_cast<int>(step(*record));
  };
  ExpectResults({{{}, 0}, {Throws(L"PrinterSettings::GetLastSetting"), -2}}, [&] {
    return inRecord([](auto& record) { return SetWatermarkInfo(1, record, false); });
  });
  ExpectResults({{{}, 1}, {Throws(L"Watermark::SetName"), 0}}, [&] {
    return inRecord([](auto& record) {
      GUID id = {};
      return SetSortingWatermarkInfo(L"E", record, &id) && Sigil::IsFilled(id);
    });
  });
}

}  // namespace
}  // namespace tests
