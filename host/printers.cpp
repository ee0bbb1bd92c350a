#include "host/printers.h"

#include "logging/log.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kList[] = L"SigilSettingManagement::GetPrinterInfoList";

constexpr LogMessage kListed = {2, 153100020, kList, L"プリンタ情報取得に成功しました。"};
constexpr LogMessage kNotListed = {4, 153100010, kList, L"プリンタ情報取得に失敗しました。"};
constexpr LogMessage kThrown = {4, 153100030, kList, L"プリンタ情報取得に失敗しました。"};

BOOL AskSpooler(void* block, DWORD size, DWORD* needed, DWORD* count) {
  return EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2,
                       static_cast<LPBYTE>(block), size, needed, count);
}

}  // namespace

int GetPrinterInfoList(PRINTER_INFO_2W** list, DWORD* count) {
  try {
    SetLastError(ERROR_SUCCESS);
    DWORD size = 0;
    AskSpooler(nullptr, 0, &size, count);
    *list = static_cast<PRINTER_INFO_2W*>(std::malloc(size));
    if (!AskSpooler(*list, size, &size, count)) {
      LogWithLastError(kNotListed);
      return -1;
    }
    Log(kListed);
    return 0;
  } catch (...) {
    Log(kThrown);
    return -1;
  }
}

}  // namespace SigilSettingManagement
