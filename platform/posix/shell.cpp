#include "platform/shell.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine.h"

namespace platform {

namespace {

constexpr IID kUnknownId = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kMallocId = {0x00000002, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

/// The C library's heap. It lives as long as the process, so its references need no count.
class Allocator final : public IMalloc {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(const IID& id, void** object) override {
    if (object == nullptr) return E_POINTER;
    const bool isMine = id == kUnknownId || id == kMallocId;
    *object = isMine ? this : nullptr;
    return isMine ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  void* STDMETHODCALLTYPE Alloc(SIZE_T bytes) override { return std::malloc(bytes); }
  void* STDMETHODCALLTYPE Realloc(void* block, SIZE_T bytes) override {
    if (block == nullptr || bytes != 0) return std::realloc(block, bytes);
    std::free(block);
    return nullptr;
  }
  void STDMETHODCALLTYPE Free(void* block) override { std::free(block); }
  SIZE_T STDMETHODCALLTYPE GetSize(void* block) override {
    return block == nullptr ? static_cast<SIZE_T>(-1) : malloc_usable_size(block);
  }
  int STDMETHODCALLTYPE DidAlloc(void*) override { return -1; }  // not known
  void STDMETHODCALLTYPE HeapMinimize() override {}
};

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
  auto* copy = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
  if (copy != nullptr) copy[text.copy(copy, text.size())] = L'\0';
  return copy;
}

/// One item that holds the path's units, and the end of the list.
LPITEMIDLIST MakeList(std::wstring_view path) {
  const std::size_t size = path.size() * sizeof(wchar_t);
  const auto itemSize = static_cast<std::uint16_t>(sizeof(std::uint16_t) + size);
  auto* list = static_cast<BYTE*>(std::calloc(1, itemSize + sizeof(std::uint16_t)));
  if (list == nullptr) return nullptr;
  std::memcpy(list, &itemSize, sizeof itemSize);
  std::memcpy(list + sizeof itemSize, path.data(), size);
  return reinterpret_cast<LPITEMIDLIST>(list);
}

}  // namespace

}  // namespace platform

HRESULT SHGetMalloc(IMalloc** allocator) {
  static platform::Allocator theAllocator;
  if (allocator == nullptr) return E_INVALIDARG;
  *allocator = nullptr;
  if (const auto failure = platform::TakeFailure("SHGetMalloc")) return *failure;
  *allocator = &theAllocator;
  return S_OK;
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

BOOL SHGetSpecialFolderPathW(HWND, LPWSTR path, int csidl, BOOL create) {
  if (path == nullptr) return FALSE;
  *path = L'\0';
  if (platform::IsToFail("SHGetSpecialFolderPathW")) return FALSE;
  const auto folder = platform::FolderOf(csidl);
  if (!folder) return FALSE;
  std::error_code error;
  if (create) std::filesystem::create_directories(platform::HostPath(*folder), error);
  if (error) return platform::FailWith(platform::ErrorOf(error.value()));
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
