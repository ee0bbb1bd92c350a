// Guards that no export reaches: a list or a record that is not there.

#include "management/element_mapping.h"
#include "management/register_watermark_info.h"
#include "policy/watermark_policy_xml_parser.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

using namespace SigilSettingManagement;

TEST(Guards, WithoutAListOrARecordNothingIsDone) {
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
