#include "management/set_use_content_log.h"

#include "management/pass.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kPass[] = L"SigilSettingManagement::SetUseContentLog";

constexpr LogMessage kNoMutex = {5, 153100840, kPass,
                                 L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNoInstance = {
    5, 153100520, kPass,
    L"Sigilインスタンス取得に失敗したため、印刷内容ログ記録コールバック呼び出し有無設定処理を中断"};
constexpr LogMessage kDone = {3, 153100740, kPass,
                              L"印刷内容ログ記録コールバック呼び出し有無設定登録完了 設定値[ %d ]"};
constexpr LogMessage kThrown = {5, 153100530, kPass,
                                L"印刷内容ログ記録コールバック呼び出し有無設定に失敗しました。"};

}  // namespace

int SetUseContentLog(bool useContentLog) {
  CPassHoldings held;
  try {
    if (!held.TakeMutex()) return held.Stop(kNoMutex, kNoMutexResult);
    OperationSigilSettings settings;
    held.Keep(settings);
    if (!settings.CreateInstance()) return held.Stop(kNoInstance, -1);

    settings.SigilLock();
    settings.SetUseContentLog(useContentLog ? 1 : 0);
    settings.SaveCfg();
    settings.SigilUnLock();
    settings.ReleaseInstance();

    held.GiveBack();
    Log(kDone, useContentLog);
    return 0;
  } catch (...) {
  }
  return held.Abandon(kThrown);
}

}  // namespace SigilSettingManagement
