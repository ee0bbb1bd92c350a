#define SIGIL_SETTING_IMPLEMENTATION

#include "boundary/exports.h"

#include "host/system_setting_mng.h"
#include "host/user_information.h"
#include "logging/log.h"
#include "management/notification_release_mode.h"
#include "management/set_use_content_log.h"
#include "management/set_watermark_all_printer.h"
#include "management/update_exclude_printer.h"
#include "management/update_water_mark_setting.h"

namespace {

using namespace SigilSettingManagement;

namespace release {
constexpr wchar_t kExport[] = L"SigilSettingReleaseWaterMark";
constexpr LogMessage kFunctionOff = {3, 153000270, kExport,
                                     L"透かし機能が無効のため処理を中断しました"};
constexpr LogMessage kUnreadable = {5, 153000280, kExport,
                                    L"設定ファイルから設定値取得できないため処理を中断しました"};
constexpr LogMessage kFailed = {5, 153000020, kExport, L"透かし無効処理に失敗しました。"};
constexpr LogMessage kDone = {3, 153000030, kExport, L"透かし無効処理が完了しました。"};
}  // namespace release

namespace set {
constexpr wchar_t kExport[] = L"SigilSettingSetWaterMark";
constexpr LogMessage kFunctionOff = {3, 153000290, kExport,
                                     L"透かし機能が無効のため処理を中断しました"};
constexpr LogMessage kUnreadable = {5, 153000300, kExport,
                                    L"設定ファイルから設定値取得できないため処理を中断しました"};
constexpr LogMessage kFailed = {5, 153000050, kExport, L"透かし有効処理に失敗しました。"};
constexpr LogMessage kDone = {3, 153000060, kExport, L"透かし有効処理が完了しました。"};
}  // namespace set

namespace update {
constexpr wchar_t kExport[] = L"SigilSettingUpdateWaterMarkSetting";
constexpr LogMessage kFailed = {5, 153000080, kExport, L"透かし設定更新処理に失敗しました。"};
constexpr LogMessage kNoFullName = {4, 153000081, kExport, L"フルネーム未取得状態"};
constexpr LogMessage kDone = {3, 153000090, kExport, L"透かし設定更新処理が完了しました。"};
}  // namespace update

namespace release_for_service {
constexpr wchar_t kExport[] = L"SigilSettingReleaseWaterMarkForService";
constexpr LogMessage kFailed = {5, 153000110, kExport,
                                L"透かし無効処理（サービス側）に失敗しました。"};
constexpr LogMessage kDone = {3, 153000120, kExport,
                              L"透かし無効処理（サービス側）が完了しました。"};
}  // namespace release_for_service

namespace content_log {
constexpr wchar_t kExport[] = L"SigilSettingSetUseContentLog";
constexpr LogMessage kFailed = {
    5, 153000140, kExport, L"印刷内容ログ記録コールバック呼び出し有無設定処理に失敗しました。"};
constexpr LogMessage kDone = {
    3, 153000150, kExport,
    L"印刷内容ログ記録コールバック呼び出し有無設定処理が完了しました。設定値：%d"};
}  // namespace content_log

namespace exclude {
constexpr wchar_t kExport[] = L"SigilSettingUpdateExcludePrinter";
constexpr LogMessage kFailed = {5, 153000160, kExport, L"Sigil除外更新処理に失敗しました。"};
constexpr LogMessage kDone = {3, 153000170, kExport, L"Sigil除外更新処理が完了しました。"};
}  // namespace exclude

/// Ends an export with a line and a result.
int End(const LogCall& call, int result) {
  Log(call);
  return result;
}

}  // namespace

int SigilSettingReleaseWaterMark() {
  const int function = IsWatermarkFuncSetting();
  if (function == 0) return End(release::kFunctionOff, SIGIL_SETTING_FUNCTION_OFF);
  if (function < 0) return End(release::kUnreadable, SIGIL_SETTING_UNREADABLE);
  if (SetWatermarkAllPrinter(false, false) != 0) return End(release::kFailed, SIGIL_SETTING_FAILED);
  const int notified = NotificationReleaseMode(L"Release");
  return End(release::kDone, notified);
}

int SigilSettingSetWaterMark() {
  const int function = IsWatermarkFuncSetting();
  if (function == 0) return End(set::kFunctionOff, SIGIL_SETTING_FUNCTION_OFF);
  if (function < 0) return End(set::kUnreadable, SIGIL_SETTING_UNREADABLE);
  if (SetWatermarkAllPrinter(true, false) != 0) return End(set::kFailed, SIGIL_SETTING_FAILED);
  NotificationReleaseMode(L"Setting");
  return End(set::kDone, SIGIL_SETTING_DONE);
}

int SigilSettingUpdateWaterMarkSetting(unsigned int /*unused*/, int policyId,
                                       const wchar_t* /*unusedText*/, const wchar_t* policyXml,
                                       int resetFullName) {
  if (resetFullName != 0) InitializeFullNameState();
  if (UpdateWaterMarkSetting(policyId, policyXml) != 0)
    return End(update::kFailed, SIGIL_SETTING_FAILED);
  if (GetFullNameState() == 0) return End(update::kNoFullName, SIGIL_SETTING_NO_FULL_NAME);
  return End(update::kDone, SIGIL_SETTING_DONE);
}

int SigilSettingReleaseWaterMarkForService() {
  if (SetWatermarkAllPrinter(false, true) != 0)
    return End(release_for_service::kFailed, SIGIL_SETTING_FAILED);
  return End(release_for_service::kDone, SIGIL_SETTING_DONE);
}

int SigilSettingSetUseContentLog(bool useContentLog) {
  if (SetUseContentLog(useContentLog) != 0) return End(content_log::kFailed, SIGIL_SETTING_FAILED);
  Log(content_log::kDone, useContentLog);
  return SIGIL_SETTING_DONE;
}

int SigilSettingUpdateExcludePrinter() {
  if (UpdateExcludePrinter() != 0) return End(exclude::kFailed, SIGIL_SETTING_FAILED);
  return End(exclude::kDone, SIGIL_SETTING_DONE);
}
