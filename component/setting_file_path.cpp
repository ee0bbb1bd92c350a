#include "component/setting_file_path.h"

#include <algorithm>
#include <cwchar>

#include "component/entry_point.h"
#include "platform/file.h"
#include "platform/mfc.h"
#include "platform/owner.h"
#include "platform/shell.h"

namespace {

constexpr wchar_t kFile[] = L"KBR-LTD\\HarborLedge!\\HarborLedge!.cfg";
constexpr std::size_t kWorkingCapacity = 2048;

constexpr auto kFreeText = [](wchar_t* text) { CoTaskMemFree(text); };
constexpr auto kFreeLibrary = [](HMODULE module) { FreeLibrary(module); };

// Looks the call up, because older systems have neither it nor the folder.
void CopyLocalAppDataLow(wchar_t (&folder)[kWorkingCapacity]) {
  using GetKnownFolderPath = HRESULT(WINAPI*)(REFKNOWNFOLDERID, DWORD, HANDLE, wchar_t**);
  const Owner<HMODULE, kFreeLibrary> shell(LoadLibraryW(L"shell32.dll"));
  if (!shell) return;
  const auto pfnGetPath = EntryPoint<GetKnownFolderPath>(shell.Get(), "SHGetKnownFolderPath");
  if (pfnGetPath == nullptr) return;
  Owner<wchar_t*, kFreeText> path;
  pfnGetPath(FOLDERID_LocalAppDataLow, 0, nullptr, path.Out());
  if (path) std::wcsncpy(folder, path.Get(), kWorkingCapacity - 1);
}

CString SettingFilePath() {
  wchar_t folder[kWorkingCapacity] = {};
  CopyLocalAppDataLow(folder);
  if (folder[0] == L'\0') SHGetSpecialFolderPathW(nullptr, folder, CSIDL_LOCAL_APPDATA, FALSE);
  const CString base = folder;
  if (PathAppendW(folder, kFile)) return folder;
  // The call appends nothing when the path would exceed MAX_PATH. The caller needs its length all
  // the same.
  return base + L"\\" + kFile;
}

}  // namespace

Sigil::SigilResult GetSettingFilePath(wchar_t* target, std::uint32_t* length) {
  const CString path = SettingFilePath();
  const auto needed = static_cast<std::uint32_t>(path.GetLength()) + 1;
  const std::uint32_t capacity = *length;
  *length = needed;
  if (target == nullptr) return Sigil::kSuccess;
  if (capacity > 0) {
    const std::uint32_t copied = std::min(capacity, needed) - 1;
    std::wmemcpy(target, path, copied);
    target[copied] = L'\0';
  }
  return capacity >= needed ? Sigil::kSuccess : Sigil::kTargetTooSmall;
}
