#include "management/set_watermark_info.h"

#include <vector>

#include "component/reference.h"
#include "component/watermark_list.h"
#include "logging/log.h"
#include "management/element_mapping.h"
#include "platform/crt.h"
#include "policy/watermark_policy_xml_parser.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kCustomSetting[] = L"HLMimosaOption";

enum Kind { kHeaderFooter = 0, kStamp = 1 };

constexpr wchar_t kSet[] = L"SigilSettingManagement::SetWatermarkInfo";
constexpr wchar_t kDelete[] = L"SigilSettingManagement::DeleteWatermarkInfoALL";
constexpr wchar_t kSort[] = L"SigilSettingManagement::SetSortingWatermarkInfo";

constexpr LogMessage kNoLastSetting = {4, 153100180, kSet,
                                       L"LastSettingインスタンス取得に失敗しました。"};
constexpr LogMessage kSetThrown = {4, 153100190, kSet,
                                   L"LastSettingインスタンス取得に失敗しました。"};
constexpr LogMessage kDeleted = {2, 153100200, kDelete,
                                 L"個別プリンタ透かし情報設定クリア処理完了"};
constexpr LogMessage kDeleteThrown = {
    4, 153100470, kDelete, L"個別プリンタ透かし情報設定クリア処理に異常が発生しました。"};
constexpr LogMessage kHeaderFooterRuns = {2, 153100210, kSort,
                                          L"フッターヘッダー 設定実施　ElementID：%s"};
constexpr LogMessage kStampRuns = {2, 153100220, kSort, L"スタンプ 設定実施　ElementID：%s"};
constexpr LogMessage kUnknownKind = {4, 153100230, kSort,
                                     L"フッターヘッダー・スタンプ仕分け処理 種別不正値：%d"};
constexpr LogMessage kSortThrown = {5, 153100480, kSort,
                                    L"フッターヘッダー・スタンプ仕分け処理に異常が発生しました。"};

using GuidList = std::vector<GUID>;

GuidList MakeWatermarks(CWatermarkPolicyXMLParser& parser, int policyId,
                        Sigil::PrinterSettings& printerSettings) {
  std::vector<CString> elementIds;
  parser.GetPolicyInfo(policyId, elementIds);
  GuidList made;
  for (const CString& elementId : elementIds) {
    GUID id = {};
    if (SetSortingWatermarkInfo(elementId, printerSettings, &id)) made.push_back(id);
  }
  return made;
}

// A setting that is switched off keeps its list.
void Activate(Sigil::LastSetting& setting, const GuidList& watermarks, bool outOfScope) {
  const bool active = !watermarks.empty() && !outOfScope;
  if (active)
    setting.SetWatermarks(watermarks.data(), static_cast<std::uint32_t>(watermarks.size()));
  setting.SetEnable(active ? 1 : 0);
}

void ActivateCustomSetting(Sigil::PrinterSettings& printerSettings, const GuidList& watermarks,
                           bool outOfScope) {
  Sigil::CReference<Sigil::LastSetting> setting;
  if (Sigil::Failed(printerSettings.GetCustomSetting(kCustomSetting, setting.Out())))
    printerSettings.CreateCustomSetting(setting.Out());
  if (!setting) return;
  setting->SetName(kCustomSetting);
  Activate(*setting, watermarks, outOfScope);
}

void ActivateLastSetting(Sigil::PrinterSettings& printerSettings, const GuidList& watermarks,
                         bool outOfScope) {
  Sigil::CReference<Sigil::LastSetting> setting;
  if (Sigil::Failed(printerSettings.GetLastSetting(setting.Out())) || !setting) {
    Log(kNoLastSetting);
    return;
  }
  Activate(*setting, watermarks, outOfScope);
}

}  // namespace

int SetWatermarkInfo(int policyId, Sigil::PrinterSettings& printerSettings, bool outOfScope) {
  try {
    CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
    DeleteWatermarkInfoALL(printerSettings);
    const GuidList made = MakeWatermarks(*parser, policyId, printerSettings);
    ActivateCustomSetting(printerSettings, made, outOfScope);
    ActivateLastSetting(printerSettings, made, outOfScope);
    return 0;
  } catch (...) {
    Log(kSetThrown);
    return -2;
  }
}

void DeleteWatermarkInfoALL(Sigil::PrinterSettings& printerSettings) {
  try {
    DeleteWatermarks(printerSettings);
    Log(kDeleted);
  } catch (...) {
    Log(kDeleteThrown);
  }
}

bool SetSortingWatermarkInfo(const CString& elementId, Sigil::PrinterSettings& printerSettings,
                             GUID* id) {
  try {
    CWatermarkPolicyXMLParser* const parser = CWatermarkPolicyXMLParser::GetInstance();
    const int kind = _wtoi(parser->GetWatermarkElement(elementId, L"Kind"));
    switch (kind) {
      case kHeaderFooter:
        Log(kHeaderFooterRuns, elementId);
        return SetHeaderFooterInfo(elementId, &printerSettings, id);
      case kStamp:
        Log(kStampRuns, elementId);
        return SetStampInfo(elementId, &printerSettings, id);
      default:
        Log(kUnknownKind, kind);
        return false;
    }
  } catch (...) {
    Log(kSortThrown);
    return false;
  }
}

}  // namespace SigilSettingManagement
