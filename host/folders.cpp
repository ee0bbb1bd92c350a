#include "host/folders.h"

#include <iterator>
#include <memory>
#include <type_traits>

#include "platform/file.h"
#include "platform/profile.h"
#include "platform/shell.h"

namespace {

constexpr wchar_t kDefaultCommonData[] = L"C:\\ProgramData";
constexpr wchar_t kDefaultEmsFolder[] = L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS";

struct ReleaseAllocator {
  void operator()(IMalloc* allocator) const { allocator->Release(); }
};

struct FreeItemList {
  IMalloc* allocator;
  void operator()(void* list) const { allocator->Free(list); }
};

CString ConfiguredEmsFolder() {
  wchar_t value[1024] = {};
  const CString clientIni = GetCommonDataPath() + kClientFolder + kClientIniName;
  GetPrivateProfileStringW(L"Setting", L"EMSDir", L"", value, static_cast<DWORD>(std::size(value)),
                           clientIni);
  return value;
}

}  // namespace

CString GetCommonDataPath() {
  IMalloc* given = nullptr;
  if (FAILED(SHGetMalloc(&given))) return kDefaultCommonData;
  const std::unique_ptr<IMalloc, ReleaseAllocator> allocator(given);

  LPITEMIDLIST location = nullptr;
  if (FAILED(SHGetSpecialFolderLocation(nullptr, CSIDL_COMMON_APPDATA, &location)))
    return kDefaultCommonData;
  const std::unique_ptr<std::remove_pointer_t<LPITEMIDLIST>, FreeItemList> list(
      location, FreeItemList{allocator.get()});

  wchar_t path[MAX_PATH + 1] = {};
  if (!SHGetPathFromIDListW(list.get(), path)) return kDefaultCommonData;
  return path;
}

EMSFolder FindEMSFolder(CString& folder, CString& value) {
  value = ConfiguredEmsFolder();
  folder = kDefaultEmsFolder;
  if (value.IsEmpty()) return EMSFolder::kNotSet;
  CString trimmed = value;
  trimmed.Trim();
  if (trimmed.IsEmpty()) return EMSFolder::kBlank;
  if (!PathIsDirectoryW(trimmed)) return EMSFolder::kNoDirectory;
  folder = trimmed;
  return EMSFolder::kConfigured;
}
