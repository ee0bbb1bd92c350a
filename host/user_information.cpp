#include "host/user_information.h"

#include "component/operation_sigil_settings.h"
#include "host/full_name_lookup.h"
#include "logging/log.h"
#include "platform/netapi.h"
#include "platform/profile.h"

namespace SigilSettingManagement {
namespace {

constexpr wchar_t kSection[] = L"User";
constexpr wchar_t kState[] = L"GetUserState";
constexpr wchar_t kFullName[] = L"UserFullName";
constexpr wchar_t kDomainName[] = L"DomainName";
constexpr wchar_t kLoginId[] = L"LoginID";
constexpr DWORD kTextCapacity = 256;

namespace prepare {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::PrepareUserFullName";
constexpr LogMessage kNoInstance = {
    5, 153100907, kFunction,
    L"Sigilインスタンス取得に失敗したため、Winユーザフルネーム取得処理を中断"};
constexpr LogMessage kNoFolder = {5, 153100904, kFunction, L"設定フォルダパス取得に失敗しました"};
constexpr LogMessage kPath = {2, 153100906, kFunction, L"ユーザ情報ファイルパス【%s】"};
constexpr LogMessage kKnown = {2, 153100909, kFunction,
                               L"ユーザフルネーム取得済みのため、スキップ"};
constexpr LogMessage kUsed = {2, 153100902, kFunction, L"ユーザフルネームを使用しました"};
constexpr LogMessage kStoredUsed = {2, 153100903, kFunction,
                                    L"キャッシュユーザフルネームを使用しました"};
constexpr LogMessage kLoginUsed = {4, 153100901, kFunction,
                                   L"ユーザフルネーム失敗したためユーザID使用しました"};
constexpr LogMessage kThrown = {5, 153100908, kFunction, L"ユーザフルネーム取得に失敗しました"};
}  // namespace prepare

namespace get {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::GetUserFullName";
constexpr LogMessage kNoInstance = {
    5, 153100907, kFunction, L"Sigilインスタンス取得に失敗したため、INIファイル情報取得処理を中断"};
constexpr LogMessage kStored = {1, 153100951, kFunction, L"Winユーザフルネームあり"};
constexpr LogMessage kStoredLogin = {1, 153100952, kFunction,
                                     L"Winユーザフルネームなし／loginID設定①"};
constexpr LogMessage kOwnLogin = {1, 153100953, kFunction,
                                  L"Winユーザフルネームなし／loginID設定②"};
constexpr LogMessage kName = {2, 153100954, kFunction, L"取得ネーム：%s"};
constexpr LogMessage kThrown = {5, 153100950, kFunction, L" Winユーザフルネーム取得に失敗しました"};
}  // namespace get

namespace reset {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::InitializeFullNameState";
constexpr LogMessage kNoInstance = {
    5, 153100907, kFunction,
    L"Sigilインスタンス取得に失敗したため、ユーザフルネーム取得状態初期化処理を中断"};
constexpr LogMessage kThrown = {5, 153100950, kFunction,
                                L" ユーザフルネーム取得状態初期化に失敗しました"};
}  // namespace reset

namespace state {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::GetFullNameState";
constexpr LogMessage kNoInstance = {
    5, 153100951, kFunction,
    L"Sigilインスタンス取得に失敗したため、ユーザフルネーム取得状態は読み出されませんでした"};
constexpr LogMessage kThrown = {5, 153100952, kFunction,
                                L"ユーザフルネーム取得状態は読み出されませんでした"};
}  // namespace state

/// The user information file, below a folder that may not be known: then it reads as empty and
/// keeps nothing.
class UserInformation {
 public:
  /// Asks the open handle for the folder and releases its instance.
  explicit UserInformation(OperationSigilSettings& settings) {
    wchar_t folder[OperationSigilSettings::kFolderCapacity] = {};
    const bool known = settings.GetSettingFileDirPath(folder) != 0;
    settings.ReleaseInstance();
    if (known) m_strFilePath = CString(folder) + L"\\UserInfoWM.ini";
  }

  bool IsKnown() const { return !m_strFilePath.IsEmpty(); }
  const CString& Path() const { return m_strFilePath; }

  int State() const {
    if (!IsKnown()) return 0;
    return static_cast<int>(GetPrivateProfileIntW(kSection, kState, 0, m_strFilePath));
  }

  CString Text(const wchar_t* key) const {
    wchar_t text[kTextCapacity] = {};
    if (IsKnown()) GetPrivateProfileStringW(kSection, key, L"", text, kTextCapacity, m_strFilePath);
    return text;
  }

  void Write(const wchar_t* key, const wchar_t* text) const {
    if (IsKnown()) WritePrivateProfileStringW(kSection, key, text, m_strFilePath);
  }

 private:
  CString m_strFilePath;
};

CString LoginName() {
  wchar_t name[kTextCapacity] = {};
  DWORD capacity = kTextCapacity;
  if (!GetUserNameW(name, &capacity)) return CString();
  return name;
}

bool LookUpAndStore(const UserInformation& file, const CString& storedName, CString& name) {
  CString fullName;
  CString domainController;
  GetUserFullName(fullName, domainController);
  const CString loginName = LoginName();

  if (!fullName.IsEmpty()) {
    name = fullName;
    file.Write(kDomainName, domainController);
    file.Write(kFullName, fullName);
    file.Write(kState, L"1");
    Log(prepare::kUsed);
    return true;
  }
  if (!storedName.IsEmpty()) {
    name = storedName;
    Log(prepare::kStoredUsed);
    return false;
  }
  name = loginName;
  file.Write(kLoginId, loginName);
  Log(prepare::kLoginUsed);
  return false;
}

}  // namespace

bool PrepareUserFullName(CString& name) {
  try {
    OperationSigilSettings settings;
    if (!settings.CreateInstance()) {
      Log(prepare::kNoInstance);
      return false;
    }
    const UserInformation file(settings);
    if (file.IsKnown()) {
      Log(prepare::kPath, file.Path());
    } else {
      Log(prepare::kNoFolder);
    }
    const int obtained = file.State();
    const CString storedName = file.Text(kFullName);
    if (obtained != 0) {
      Log(prepare::kKnown);
      return true;
    }
    return LookUpAndStore(file, storedName, name);
  } catch (...) {
    Log(prepare::kThrown);
    return false;
  }
}

bool GetUserFullName(CString& name) {
  bool stored = false;
  try {
    name.Empty();
    OperationSigilSettings settings;
    if (!settings.CreateInstance()) {
      Log(get::kNoInstance);
      return false;
    }
    const UserInformation file(settings);
    const CString fullName = file.Text(kFullName);
    const CString loginName = file.Text(kLoginId);
    if (!fullName.IsEmpty()) {
      name = fullName;
      Log(get::kStored);
      stored = true;
    } else if (!loginName.IsEmpty()) {
      name = loginName;
      Log(get::kStoredLogin);
    } else {
      name = LoginName();
      Log(get::kOwnLogin);
    }
    Log(get::kName, name);
  } catch (...) {
    Log(get::kThrown);
  }
  return stored;
}

void InitializeFullNameState() {
  try {
    OperationSigilSettings settings;
    if (!settings.CreateInstance()) {
      Log(reset::kNoInstance);
      return;
    }
    UserInformation(settings).Write(kState, L"0");
  } catch (...) {
    Log(reset::kThrown);
  }
}

int GetFullNameState() {
  try {
    OperationSigilSettings settings;
    if (!settings.CreateInstance()) {
      Log(state::kNoInstance);
      return 0;
    }
    return UserInformation(settings).State();
  } catch (...) {
    Log(state::kThrown);
    return 0;
  }
}

}  // namespace SigilSettingManagement
