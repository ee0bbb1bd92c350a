#include "component/setting_mutex.h"

#include "component/names.h"
#include "logging/log.h"
#include "platform/synch.h"

namespace {

constexpr DWORD kTimeoutMilliseconds = 180000;

constexpr wchar_t kGetMutex[] = L"GetMutex_SigilSetting";

constexpr LogMessage kNotCreated = {5, 100907, kGetMutex,
                                    L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kNotAcquired = {5, 100908, kGetMutex,
                                     L"Sigil設定ファイルへのロックが取得できませんでした。"};
constexpr LogMessage kAcquired = {2, 100909, kGetMutex, L"Sigil設定ファイル用MUTEXロックOK"};

}  // namespace

HANDLE GetMutex_SigilSetting(SECURITY_ATTRIBUTES* attributes) {
  const HANDLE mutex = CreateMutexW(attributes, FALSE, kSettingMutexName);
  if (mutex == nullptr) {
    Log(kNotCreated);
    return nullptr;
  }
  const DWORD waited = WaitForSingleObject(mutex, kTimeoutMilliseconds);
  if (waited != WAIT_OBJECT_0) {
    Log(kNotAcquired);
    // This thread owns an abandoned mutex. It is released, so that only this call fails and no
    // later one.
    if (waited == WAIT_ABANDONED) ReleaseMutex(mutex);
    CloseHandle(mutex);
    return nullptr;
  }
  Log(kAcquired);
  return mutex;
}

void GiveBackMutex(HANDLE mutex) {
  ReleaseMutex(mutex);
  CloseHandle(mutex);
}
