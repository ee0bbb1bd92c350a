#include "host/folders.h"

#include <iterator>

#include "platform/file.h"
#include "platform/owner.h"
#include "platform/profile.h"
#include "platform/shell.h"

namespace {

constexpr wchar_t kDefaultCommonData[] = L"C:\\ProgramData";
constexpr wchar_t kDefaultEmsFolder[] = L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS";

constexpr auto kRelease = [](IMalloc* allocator) { allocator->Release(); };

CString ConfiguredEmsFolder() {
  wchar_t value[1024] = {};
  const CString clientIni = GetCommonDataPath() + kClientFolder + kClientIniName;
  GetPrivateProfileStringW(L"Setting", L"EMSDir", L"", value, static_cast<DWORD>(std::size(value)),
                           clientIni);
  return value;
}

}  // namespace

CString GetCommonDataPath() {
  Owner<IMalloc*, kRelease> allocator;
  if (FAILED(SHGetMalloc(allocator.Out()))) return kDefaultCommonData;
  LPITEMIDLIST list = nullptr;
  if (FAILED(SHGetSpecialFolderLocation(nullptr, CSIDL_COMMON_APPDATA, &list)))
    return kDefaultCommonData;
  wchar_t path[MAX_PATH + 1] = {};
  const bool told = SHGetPathFromIDListW(list, path) != FALSE;
  allocator->Free(list);
  return told ? path : kDefaultCommonData;
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
