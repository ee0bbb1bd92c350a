#include "platform/shell.h"

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"

namespace platform {

namespace {

/// The failure that a test wants of `operation`, as HRESULT_FROM_WIN32 makes it; null: none.
std::optional<HRESULT> TakeFailure(const char* operation) {
  const auto fault = TakeFault(operation);
  if (!fault) return std::nullopt;
  const auto result = static_cast<HRESULT>(*fault);
  return result <= 0 ? result : static_cast<HRESULT>((*fault & 0xFFFF) | 0x80070000U);
}

std::wstring UserFolder(std::wstring_view below) {
  return LR"(C:\Users\)" + LoadMachine().user + std::wstring(below);
}

/// The folder's path; null when it is unknown or too long for a caller's buffer. It need not be
/// there: the folders of a Windows machine always are, those of this one come with their files.
std::optional<std::wstring> FolderOf(int csidl) {
  std::wstring path;
  try {
    if (csidl == CSIDL_COMMON_APPDATA) path = LR"(C:\ProgramData)";
    if (csidl == CSIDL_LOCAL_APPDATA) path = UserFolder(LR"(\AppData\Local)");
  } catch (const std::system_error&) {
  }
  if (path.empty() || path.size() >= MAX_PATH) return std::nullopt;
  return path;
}

/// A copy with the NUL, for CoTaskMemFree; null: no memory.
LPWSTR CopyOf(std::wstring_view text) {
  auto* copy = static_cast<wchar_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
  if (copy != nullptr) copy[text.copy(copy, text.size())] = L'\0';
  return copy;
}

}  // namespace

}  // namespace platform

HRESULT SHGetMalloc(IMalloc** allocator) {
  *allocator = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetMalloc")) return *failure;
  return CoGetMalloc(1, allocator);
}

HRESULT SHGetSpecialFolderLocation(HWND, int csidl, LPITEMIDLIST* list) {
  *list = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetSpecialFolderLocation")) return *failure;
  const auto folder = platform::FolderOf(csidl);
  if (!folder) return E_INVALIDARG;
  *list = reinterpret_cast<LPITEMIDLIST>(platform::CopyOf(*folder));
  return *list == nullptr ? E_OUTOFMEMORY : S_OK;
}

BOOL SHGetPathFromIDListW(LPCITEMIDLIST list, LPWSTR path) {
  *path = L'\0';
  if (platform::IsToFail("SHGetPathFromIDListW")) return FALSE;
  const std::wstring_view folder(reinterpret_cast<LPCWSTR>(list));
  path[folder.copy(path, folder.size())] = L'\0';
  return TRUE;
}

BOOL SHGetSpecialFolderPathW(HWND, LPWSTR path, int csidl, BOOL) {
  *path = L'\0';
  if (platform::IsToFail("SHGetSpecialFolderPathW")) return FALSE;
  const auto folder = platform::FolderOf(csidl);
  if (!folder) return FALSE;
  path[folder->copy(path, folder->size())] = L'\0';
  return TRUE;
}

HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD, HANDLE, LPWSTR* path) {
  constexpr auto kNotFound = static_cast<HRESULT>(0x80070000U | ERROR_FILE_NOT_FOUND);
  *path = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetKnownFolderPath")) return *failure;
  if (!(folder == FOLDERID_LocalAppDataLow)) return kNotFound;
  try {
    *path = platform::CopyOf(platform::UserFolder(LR"(\AppData\LocalLow)"));
  } catch (const std::system_error&) {
    return E_FAIL;
  }
  return *path == nullptr ? E_OUTOFMEMORY : S_OK;
}
