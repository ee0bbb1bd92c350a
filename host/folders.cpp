#include "host/folders.h"

#include <iterator>
#include <memory>
#include <type_traits>

#include "logging/log.h"
#include "platform/file.h"
#include "platform/profile.h"
#include "platform/shell.h"

namespace {

constexpr wchar_t kDefaultCommonData[] = L"C:\\ProgramData";
constexpr wchar_t kDefaultEmsFolder[] = L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS";
constexpr wchar_t kClientIni[] = L"\\config\\Client.ini";

constexpr wchar_t kGetEmsFolder[] = L"SigilSettingManagement::GetEMSFolderPath";

constexpr LogMessage kNotSet = {4, 153100320, kGetEmsFolder,
                                L"配信先ディレクトリが、設定されていません。"};
constexpr LogMessage kBlank = {4, 153100330, kGetEmsFolder,
                               L"設定値が異常です。[配信先ディレクトリ] 設定値:[%s]"};
constexpr LogMessage kNoDirectory = {
    5, 153100340, kGetEmsFolder,
    L"ディレクトリの存在確認及び、作成処理に失敗しました。[配信先ディレクトリ] 設定値:[%s]"};
constexpr LogMessage kThrown = {4, 153100490, kGetEmsFolder,
                                L"配信フォルダパス取得処理に異常が発生しました。"};

struct ReleaseAllocator {
  void operator()(IMalloc* allocator) const { allocator->Release(); }
};

struct FreeItemList {
  IMalloc* allocator;
  void operator()(void* list) const { allocator->Free(list); }
};

CString ConfiguredEmsFolder() {
  wchar_t value[1024] = {};
  const CString clientIni = GetCommonDataPath() + kClientFolder + kClientIni;
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

namespace SigilSettingManagement {

bool GetEMSFolderPath(CString& folder) {
  try {
    const CString value = ConfiguredEmsFolder();
    folder = kDefaultEmsFolder;
    if (value.IsEmpty()) {
      Log(kNotSet);
      return false;
    }
    CString trimmed = value;
    trimmed.Trim();
    if (trimmed.IsEmpty()) {
      Log(kBlank, value);
      return false;
    }
    if (!PathIsDirectoryW(trimmed)) {
      Log(kNoDirectory, value);
      return false;
    }
    folder = trimmed;
    return true;
  } catch (...) {
    Log(kThrown);
    return false;
  }
}

}  // namespace SigilSettingManagement
