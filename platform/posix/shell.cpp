#include "platform/shell.h"

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"

namespace platform {

namespace {

/// Returns the failure that a test wants of `operation`, as HRESULT_FROM_WIN32 makes it; null:
/// none.
std::optional<HRESULT> TakeFailure(const char* operation) {
  const auto fault = TakeFault(operation);
  if (!fault) return std::nullopt;
  const auto result = static_cast<HRESULT>(*fault);
  return result <= 0 ? result : static_cast<HRESULT>((*fault & 0xFFFF) | 0x80070000U);
}

/// Returns the path of a folder in the user's folder; null when machine.ini cannot be read or when
/// the path has more than MAX_PATH units with its NUL, which no user's folder on Windows has. The
/// folder need not exist: it is made with the first file in it.
std::optional<std::wstring> UserFolder(std::wstring_view below) {
  try {
    std::wstring path = LR"(C:\Users\)" + LoadMachine().user + std::wstring(below);
    if (path.size() < MAX_PATH) return path;
  } catch (const std::system_error&) {
  }
  return std::nullopt;
}

std::optional<std::wstring> FolderOf(int csidl) {
  if (csidl == CSIDL_COMMON_APPDATA) return LR"(C:\ProgramData)";
  if (csidl == CSIDL_LOCAL_APPDATA) return UserFolder(LR"(\AppData\Local)");
  return std::nullopt;
}

/// Returns a copy with the NUL, for CoTaskMemFree; null: no memory.
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
  const auto low = platform::UserFolder(LR"(\AppData\LocalLow)");
  if (!low) return E_FAIL;
  *path = platform::CopyOf(*low);
  return *path == nullptr ? E_OUTOFMEMORY : S_OK;
}
