#include "management/update_water_mark_setting.h"

#include "host/user_information.h"
#include "management/exclusion_walk.h"
#include "management/pass.h"
#include "management/register_watermark_info.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kPass[] = L"SigilSettingManagement::UpdateWaterMarkSetting";

constexpr LogMessage kNoPrinters = {
    5, 153100110, kPass, L"プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"};
constexpr LogMessage kNoMutex = {5, 153100830, kPass,
                                 L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNoInstance = {
    5, 153100120, kPass,
    L"Sigilインスタンス取得に失敗したため、全プリンタ透かし情報設定処理を中断"};
constexpr ExclusionWalkMessages kWalk = {
    {2, 153100640, kPass, L"[%03d]除外プリンターチェック：[プリンタ名：%s]"},
    {1, 153100710, kPass, L"プリンタコメント無し"},
    {1, 153100720, kPass, L"プリンタコメントに監視対象コメント無し"},
    {1, 153100730, kPass, L"プリンタコメントに監視対象コメント有り"}};
constexpr LogMessage kRegistered = {2, 153100620, kPass, L"透かし情報登録処理に成功しました。"};
constexpr LogMessage kNotRegistered = {4, 153100630, kPass, L"透かし情報設定処理に失敗しました。"};
constexpr LogMessage kThrown = {4, 153100160, kPass, L"全プリンタ透かし情報設定処理に失敗しました"};

/// Registers the policy and saves the exclude entries with it. Returns 0 or -4.
int RegisterAndSave(int policyId, const wchar_t* policyXml, OperationSigilSettings& settings,
                    const CPrinterList& printers) {
  if (RegisterWatermarkInfo(policyId, policyXml, settings, printers.begin(), printers.Count()) !=
      0) {
    Log(kNotRegistered);
    return -4;
  }
  settings.SaveCfg();
  Log(kRegistered);
  return 0;
}

}  // namespace

int UpdateWaterMarkSetting(int policyId, const wchar_t* policyXml) {
  CPassHoldings held;
  try {
    if (!held.Printers().Read()) return held.Stop(kNoPrinters, -1);
    // Fills the user information file, from which the texts take the user's name.
    CString userName;
    PrepareUserFullName(userName);

    if (!held.TakeMutex()) return held.Stop(kNoMutex, kNoMutexResult);
    OperationSigilSettings settings;
    held.Keep(settings);
    if (!settings.CreateInstance()) return held.Stop(kNoInstance, -2);

    settings.SigilLock();
    settings.AllDeleteExclude();
    settings.AllDeletePrinterSetting();
    ExcludePrinters(held.Printers(), kWalk, settings);
    const int result = RegisterAndSave(policyId, policyXml, settings, held.Printers());
    settings.SigilUnLock();
    settings.ReleaseInstance();

    held.GiveBack();
    return result;
  } catch (...) {
  }
  return held.Abandon(kThrown);
}

}  // namespace SigilSettingManagement
