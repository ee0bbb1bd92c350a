#include "management/update_exclude_printer.h"

#include "management/exclusion_walk.h"
#include "management/pass.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kPass[] = L"SigilSettingManagement::UpdateExcludePrinter";

constexpr LogMessage kNoPrinters = {
    5, 153100750, kPass, L"プリンタ情報取得に失敗したため、全プリンタ透かし情報設定処理を中断"};
constexpr LogMessage kNoMutex = {5, 153100850, kPass,
                                 L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNoInstance = {
    5, 153100750, kPass,
    L"Sigilインスタンス取得に失敗したため、全プリンタ透かし情報設定処理を中断"};
constexpr ExclusionWalkMessages kWalk = {
    {2, 153100760, kPass, L"[%03d]除外プリンターチェック：[プリンタ名：%s]"},
    {1, 153100770, kPass, L"プリンタコメント無し"},
    {1, 153100780, kPass, L"プリンタコメントに監視対象コメント無し"},
    {1, 153100790, kPass, L"プリンタコメントに監視対象コメント有り"}};
constexpr LogMessage kEnd = {1, 153100810, kPass, L"Sigil除外設定更新処理完了"};
constexpr LogMessage kThrown = {4, 153100800, kPass, L"Sigil除外設定更新処理に失敗しました"};

}  // namespace

int UpdateExcludePrinter() {
  bool thrown = false;
  CPassHoldings held;
  try {
    if (!held.Printers().Read()) return held.Stop(kNoPrinters, -1);
    if (!held.TakeMutex()) return held.Stop(kNoMutex, kNoMutexResult);
    OperationSigilSettings settings;
    held.Keep(settings);
    if (!settings.CreateInstance()) return held.Stop(kNoInstance, -2);

    settings.SigilLock();
    settings.AllDeleteExclude();
    ExcludePrinters(held.Printers(), kWalk, settings);
    settings.SaveCfg();
    settings.SigilUnLock();
    settings.ReleaseInstance();

    held.GiveBack();
  } catch (...) {
    thrown = true;
  }
  const int result = thrown ? held.Abandon(kThrown) : 0;
  Log(kEnd);
  return result;
}

}  // namespace SigilSettingManagement
