#include "platform/shell.h"

#include <cstring>
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

/// One item that holds the path's units, and the end of the list.
LPITEMIDLIST MakeList(std::wstring_view path) {
  const std::size_t size = path.size() * sizeof(wchar_t);
  const auto itemSize = static_cast<std::uint16_t>(sizeof(std::uint16_t) + size);
  auto* list = static_cast<BYTE*>(CoTaskMemAlloc(itemSize + sizeof(std::uint16_t)));
  if (list == nullptr) return nullptr;
  std::memcpy(list, &itemSize, sizeof itemSize);
  std::memcpy(list + sizeof itemSize, path.data(), size);
  std::memset(list + itemSize, 0, sizeof(std::uint16_t));
  return reinterpret_cast<LPITEMIDLIST>(list);
}

}  // namespace

}  // namespace platform

HRESULT SHGetMalloc(IMalloc** allocator) {
  if (allocator == nullptr) return E_INVALIDARG;
  *allocator = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetMalloc")) return *failure;
  return CoGetMalloc(1, allocator);
}

HRESULT SHGetSpecialFolderLocation(HWND, int csidl, LPITEMIDLIST* list) {
  if (list == nullptr) return E_INVALIDARG;
  *list = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetSpecialFolderLocation")) return *failure;
  const auto folder = platform::FolderOf(csidl);
  if (!folder) return E_INVALIDARG;
  *list = platform::MakeList(*folder);
  return *list == nullptr ? E_OUTOFMEMORY : S_OK;
}

BOOL SHGetPathFromIDListW(LPCITEMIDLIST list, LPWSTR path) {
  if (path == nullptr) return FALSE;
  *path = L'\0';
  if (platform::IsToFail("SHGetPathFromIDListW") || list == nullptr) return FALSE;
  const std::size_t size = list->mkid.cb;
  const std::size_t length = (size - sizeof list->mkid.cb) / sizeof(wchar_t);
  if (size <= sizeof list->mkid.cb || length >= MAX_PATH) return FALSE;
  std::memcpy(path, list->mkid.abID, length * sizeof(wchar_t));
  path[length] = L'\0';
  return TRUE;
}

BOOL SHGetSpecialFolderPathW(HWND, LPWSTR path, int csidl, BOOL) {
  if (path == nullptr) return FALSE;
  *path = L'\0';
  if (platform::IsToFail("SHGetSpecialFolderPathW")) return FALSE;
  const auto folder = platform::FolderOf(csidl);
  if (!folder) return FALSE;
  path[folder->copy(path, folder->size())] = L'\0';
  return TRUE;
}

HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD, HANDLE, LPWSTR* path) {
  constexpr auto kNotFound = static_cast<HRESULT>(0x80070000U | ERROR_FILE_NOT_FOUND);
  if (path == nullptr) return E_INVALIDARG;
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
