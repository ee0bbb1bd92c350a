// What passes give back. The exports turn every failure into one result, so only here the numbers
// can be told apart.

#include "management/element_mapping.h"
#include "management/register_watermark_info.h"
#include "management/set_use_content_log.h"
#include "management/set_watermark_all_printer.h"
#include "management/set_watermark_info.h"
#include "management/update_exclude_printer.h"
#include "management/update_water_mark_setting.h"
#include "platform/utf.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/support/policy.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

using namespace SigilSettingManagement;

/// Each cause meets a fresh machine with two printers of the suite and a delivered policy.
template <class Pass>
void ExpectResults(const std::vector<std::pair<int, std::string>>& rows, const Pass& pass) {
  for (const auto& [result, causes] : rows) {
    SCOPED_TRACE(causes);
    TestMachine machine;
    machine.SetPrinters({{L"甲", kSuiteDriver, std::nullopt}, {L"乙", kSuiteDriver, std::nullopt}});
    machine.Write(kPolicyFile, SealPolicy(platform::ToUtf8(Policy(1, L"0", {}))));
    Arrange(causes);
    EXPECT_EQ(pass(), result);
    CWatermarkPolicyXMLParser::DeleteInstance();
  }
}

TEST(Results, TellWhatEndedAPass) {
  const std::string noMutex = "CreateMutexW fails", noPrinters = "EnumPrintersW fails after 1";
  const std::string noInstance = "each call of SigilCreateInstance gives -1";
  const std::string thrown = "call 1 of Settings::Lock throws";
  ExpectResults({{-99, noMutex}, {-1, noInstance}, {-3, thrown}},
                [] { return SetUseContentLog(true); });
  ExpectResults({{-1, noPrinters}, {-99, noMutex}, {-2, noInstance}, {-3, thrown}},
                UpdateExcludePrinter);
  ExpectResults({{-1, noPrinters},
                 {-99, noMutex},
                 {-2, noInstance},
                 {-3, thrown},
                 {-4, "_wfopen_s fails"},
                 {1, "call 2 of PrinterSettings::GetLastSetting gives -1"},
                 {2, "each call of PrinterSettings::GetLastSetting gives -1"}},
                [] { return SetWatermarkAllPrinter(true, false); });
  ExpectResults({{-1, noPrinters},
                 {-99, noMutex},
                 {-2, noInstance},
                 {-3, thrown},
                 {-4, "call 1 of Settings::GetPrinterSettings throws"},
                 // A listed name that throws when the list goes, after all deletions.
                 {-3, "\"printer settings\" is 古い and call 3 of String::Release throws"}},
                [] { return UpdateWaterMarkSetting(1, Policy(1, L"0", {}).c_str()); });
}

TEST(Results, WithoutAListOrARecordNothingIsDone) {
  TestMachine machine;
  {
    OperationSigilSettings settings;
    EXPECT_EQ(RegisterWatermarkInfo(1, L"<a/>", settings, nullptr, 0), -1);
    GUID id{};
    EXPECT_FALSE(SetHeaderFooterInfo(L"E1", nullptr, &id));
    EXPECT_FALSE(SetStampInfo(L"E1", nullptr, &id));
  }
  CWatermarkPolicyXMLParser::DeleteInstance();
  ExpectRecord(R"(
component loaded
CoInitialize
5 153100110 SigilSettingManagement::RegisterWatermarkInfo "プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"
4 153100250 SigilSettingManagement::SetHeaderFooterInfo "PrinterSettingsインスタンスが無いため、フッターヘッダー設定処理中断"
4 153100290 SigilSettingManagement::SetStampInfo "PrinterSettingsインスタンスが無いため、スタンプ設定処理中断"
component unloaded
CoUninitialize
)");
}

}  // namespace
}  // namespace tests
