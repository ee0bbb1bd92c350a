#include "management/notification_release_mode.h"

#include <string>
#include <string_view>

#include "component/security_attributes.h"
#include "host/shared_names.h"
#include "logging/log.h"
#include "platform/file.h"
#include "platform/owner.h"
#include "platform/utf.h"

namespace SigilSettingManagement {
namespace {

constexpr DWORD kMessageSize = 16;

constexpr wchar_t kNotify[] = L"SigilSettingManagement::NotificationReleaseMode";

constexpr LogMessage kNoMessage = {
    4, 153100680, kNotify,
    L"通知メッセージが空です。透かし制御サービスへイベント通知処理を中止します"};
constexpr LogMessage kNoDescriptor = {4, 153100410, kNotify, L"セキュリティ記述子生成失敗。"};
constexpr LogMessage kNoPipe = {5, 153100420, kNotify, L"パイプをオープンできませんでした"};
constexpr LogMessage kNotWritten = {5, 153100430, kNotify, L"パイプへの書き込みに失敗しました。"};
constexpr LogMessage kNotClosed = {5, 153100440, kNotify, L"ファイルクローズ失敗しました。"};
constexpr LogMessage kNotified = {3, 153100450, kNotify,
                                  L"★★★透かし解除・設定通知イベント通知＜%s＞★★★"};
constexpr LogMessage kThrown = {5, 153100510, kNotify, L"透かし解除通知処理に異常が発生しました。"};

constexpr auto kClosePipe = [](HANDLE pipe) { CloseHandle(pipe); };

/// Null when the pipe cannot be opened.
HANDLE OpenPipe(SECURITY_ATTRIBUTES* attributes) {
  const HANDLE pipe =
      CreateFileW(kControlPipe, GENERIC_WRITE, 0, attributes, OPEN_EXISTING, 0, nullptr);
  return pipe == INVALID_HANDLE_VALUE ? nullptr : pipe;
}

std::string OnTheWire(std::wstring_view message) {
  std::string bytes = platform::ToUtf16LeBytes(message);
  bytes.resize(kMessageSize, '\0');
  return bytes;
}

}  // namespace

int NotificationReleaseMode(const wchar_t* message) {
  int result = 0;
  try {
    if (message == nullptr || *message == L'\0') {
      Log(kNoMessage);
      return -5;
    }
    COpenSecurityAttributes attributes;
    if (attributes.Get() == nullptr) {
      Log(kNoDescriptor);
      return -1;
    }
    Owner<HANDLE, kClosePipe> pipe(OpenPipe(attributes.Get()));
    if (!pipe) {
      LogWithLastError(kNoPipe);
      return -2;
    }
    const std::string bytes = OnTheWire(message);
    DWORD written = 0;
    if (!WriteFile(pipe.Get(), bytes.data(), kMessageSize, &written, nullptr)) {
      LogWithLastError(kNotWritten);
      return -3;
    }
    if (!CloseHandle(pipe.Release())) {
      Log(kNotClosed);
      result = -4;
    }
    attributes.Reset();
    Log(kNotified, message);
  } catch (...) {
    Log(kThrown);
  }
  return result;
}

}  // namespace SigilSettingManagement
