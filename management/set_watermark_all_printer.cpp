#include "management/set_watermark_all_printer.h"

#include <optional>

#include "management/pass.h"
#include "management/printer_scope.h"
#include "management/switch_walk.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kPass[] = L"SigilSettingManagement::SetWatermarkAllPrinter";

constexpr LogMessage kNoMutex = {5, 153100860, kPass,
                                 L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNoInstance = {
    5, 153100050, kPass,
    L"Sigilインスタンス取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kScopeless = {
    5, 153100110, kPass,
    L"プリンタ適応範囲が取得できないため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kNoPrinters = {
    5, 153100040, kPass, L"プリンタ情報取得に失敗したため、全プリンタ透かし有効無効設定処理を中断"};
constexpr LogMessage kThrown = {5, 153100100, kPass,
                                L"全プリンタ透かし有効無効設定処理に失敗しました"};

}  // namespace

int SetWatermarkAllPrinter(bool enable, bool service) {
  CPassHoldings held;
  try {
    if (!held.TakeMutex()) return held.Stop(kNoMutex, kNoMutexResult);
    OperationSigilSettings settings;
    held.Keep(settings);
    if (!settings.CreateInstance()) return held.Stop(kNoInstance, -2);

    const std::optional<int> scope = ReadDeliveredScope();
    if (!scope) return held.Stop(kScopeless, -4);
    if (!held.Printers().Read()) return held.Stop(kNoPrinters, -1);

    settings.SigilLock();
    const int failures = SwitchEntries(settings, held.Printers(), *scope, enable, service);
    settings.SaveCfg();
    settings.SigilUnLock();
    settings.ReleaseInstance();

    // This pass has taken the printer list last, under the mutex, and so gives it back first.
    held.Printers().Reset();
    held.GiveBack();
    return failures;
  } catch (...) {
  }
  return held.Abandon(kThrown);
}

}  // namespace SigilSettingManagement
