#include "host/ems_folder.h"

#include "host/folders.h"
#include "logging/log.h"

namespace {

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

}  // namespace

namespace SigilSettingManagement {

bool GetEMSFolderPath(CString& folder) {
  try {
    CString value;
    switch (FindEMSFolder(folder, value)) {
      case EMSFolder::kConfigured:
        return true;
      case EMSFolder::kNotSet:
        Log(kNotSet);
        return false;
      case EMSFolder::kBlank:
        Log(kBlank, value);
        return false;
      case EMSFolder::kNoDirectory:
        Log(kNoDirectory, value);
        return false;
    }
  } catch (...) {
    Log(kThrown);
  }
  return false;
}

}  // namespace SigilSettingManagement
