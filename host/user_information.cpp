#include "host/user_information.h"

#include <memory>

#include "component/operation_sigil_settings.h"
#include "host/full_name_lookup.h"
#include "host/shared_names.h"
#include "logging/log.h"
#include "platform/netapi.h"
#include "platform/profile.h"

namespace SigilSettingManagement {
namespace {

constexpr DWORD kTextCapacity = 256;

/// The messages of the two failures of a function.
struct EndMessages {
  LogMessage noInstance;
  LogMessage thrown;
};

namespace prepare {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::PrepareUserFullName";
constexpr EndMessages kEnds = {
    {5, 153100907, kFunction,
     L"Sigilインスタンス取得に失敗したため、Winユーザフルネーム取得処理を中断"},
    {5, 153100908, kFunction, L"ユーザフルネーム取得に失敗しました"}};
constexpr LogMessage kNoFolder = {5, 153100904, kFunction, L"設定フォルダパス取得に失敗しました"};
constexpr LogMessage kPath = {2, 153100906, kFunction, L"ユーザ情報ファイルパス【%s】"};
constexpr LogMessage kKnown = {2, 153100909, kFunction,
                               L"ユーザフルネーム取得済みのため、スキップ"};
constexpr LogMessage kUsed = {2, 153100902, kFunction, L"ユーザフルネームを使用しました"};
constexpr LogMessage kStoredUsed = {2, 153100903, kFunction,
                                    L"キャッシュユーザフルネームを使用しました"};
constexpr LogMessage kLoginUsed = {4, 153100901, kFunction,
                                   L"ユーザフルネーム失敗したためユーザID使用しました"};
}  // namespace prepare

namespace get {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::GetUserFullName";
constexpr EndMessages kEnds = {
    {5, 153100907, kFunction,
     L"Sigilインスタンス取得に失敗したため、INIファイル情報取得処理を中断"},
    {5, 153100950, kFunction, L" Winユーザフルネーム取得に失敗しました"}};
constexpr LogMessage kStored = {1, 153100951, kFunction, L"Winユーザフルネームあり"};
constexpr LogMessage kStoredLogin = {1, 153100952, kFunction,
                                     L"Winユーザフルネームなし／loginID設定①"};
constexpr LogMessage kOwnLogin = {1, 153100953, kFunction,
                                  L"Winユーザフルネームなし／loginID設定②"};
constexpr LogMessage kName = {2, 153100954, kFunction, L"取得ネーム：%s"};
}  // namespace get

namespace reset {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::InitializeFullNameState";
constexpr EndMessages kEnds = {
    {5, 153100907, kFunction,
     L"Sigilインスタンス取得に失敗したため、ユーザフルネーム取得状態初期化処理を中断"},
    {5, 153100950, kFunction, L" ユーザフルネーム取得状態初期化に失敗しました"}};
}  // namespace reset

namespace state {
constexpr wchar_t kFunction[] = L"SigilSettingManagement::GetFullNameState";
constexpr EndMessages kEnds = {
    {5, 153100951, kFunction,
     L"Sigilインスタンス取得に失敗したため、ユーザフルネーム取得状態は読み出されませんでした"},
    {5, 153100952, kFunction, L"ユーザフルネーム取得状態は読み出されませんでした"}};
}  // namespace state

/// The user information file. Without a known folder it reads as empty and writes nothing.
class CUserInformation {
 public:
  /// Asks the open handle for the folder and releases its instance.
  explicit CUserInformation(OperationSigilSettings& settings) {
    wchar_t folder[OperationSigilSettings::kFolderCapacity] = {};
    const bool known = settings.GetSettingFileDirPath(folder) != 0;
    settings.ReleaseInstance();
    if (known) m_strFilePath = CString(folder) + kUserInformationName;
  }

  bool IsKnown() const { return !m_strFilePath.IsEmpty(); }
  const CString& Path() const { return m_strFilePath; }

  int State() const {
    if (!IsKnown()) return 0;
    return static_cast<int>(GetPrivateProfileIntW(kUserSection, kUserStateKey, 0, m_strFilePath));
  }

  CString Text(const wchar_t* key) const {
    wchar_t text[kTextCapacity] = {};
    if (IsKnown())
      GetPrivateProfileStringW(kUserSection, key, L"", text, kTextCapacity, m_strFilePath);
    return text;
  }

  void Write(const wchar_t* key, const wchar_t* text) const {
    if (IsKnown()) WritePrivateProfileStringW(kUserSection, key, text, m_strFilePath);
  }

 private:
  CString m_strFilePath;
};

/// Opens a handle, learns from it where the file is and does `work` on the file while the handle
/// lives. Without an instance `work` is not done; an exception ends it. Both are logged.
template <typename Work>
void WithUserInformation(const EndMessages& ends, Work work) {
  std::shared_ptr<const ComponentRecord> component;
  try {
    OperationSigilSettings settings;
    component = settings.Component();
    if (settings.CreateInstance()) {
      work(CUserInformation(settings));
    } else {
      Log(ends.noInstance);
    }
    return;
  } catch (...) {
  }
  // Not in the catch clause: an exception of the component's own class has to end before this.
  component.reset();
  Log(ends.thrown);
}

CString LoginName() {
  wchar_t name[kTextCapacity] = {};
  DWORD capacity = kTextCapacity;
  if (!GetUserNameW(name, &capacity)) return CString();
  return name;
}

/// `found` becomes true as soon as the directory has given a name, before the name is stored: if
/// storing throws, the name was found all the same.
void LookUpAndStore(const CUserInformation& file, const CString& storedName, CString& name,
                    bool& found) {
  CString fullName;
  CString domainController;
  GetUserFullName(fullName, domainController);
  const CString loginName = LoginName();

  if (!fullName.IsEmpty()) {
    name = fullName;
    found = true;
    file.Write(kUserDomainKey, domainController);
    file.Write(kUserFullNameKey, fullName);
    file.Write(kUserStateKey, L"1");
    Log(prepare::kUsed);
  } else if (!storedName.IsEmpty()) {
    name = storedName;
    Log(prepare::kStoredUsed);
  } else {
    name = loginName;
    file.Write(kUserLoginKey, loginName);
    Log(prepare::kLoginUsed);
  }
}

}  // namespace

bool PrepareUserFullName(CString& name) {
  bool found = false;
  WithUserInformation(prepare::kEnds, [&](const CUserInformation& file) {
    if (file.IsKnown()) {
      Log(prepare::kPath, file.Path());
    } else {
      Log(prepare::kNoFolder);
    }
    const int state = file.State();
    const CString storedName = file.Text(kUserFullNameKey);
    if (state != 0) {
      found = true;
      Log(prepare::kKnown);
    } else {
      LookUpAndStore(file, storedName, name, found);
    }
  });
  return found;
}

bool GetUserFullName(CString& name) {
  name.Empty();
  bool stored = false;
  WithUserInformation(get::kEnds, [&](const CUserInformation& file) {
    const CString fullName = file.Text(kUserFullNameKey);
    const CString loginName = file.Text(kUserLoginKey);
    if (!fullName.IsEmpty()) {
      name = fullName;
      stored = true;
      Log(get::kStored);
    } else if (!loginName.IsEmpty()) {
      name = loginName;
      Log(get::kStoredLogin);
    } else {
      name = LoginName();
      Log(get::kOwnLogin);
    }
    Log(get::kName, name);
  });
  return stored;
}

void InitializeFullNameState() {
  WithUserInformation(reset::kEnds,
                      [](const CUserInformation& file) { file.Write(kUserStateKey, L"0"); });
}

int GetFullNameState() {
  int result = 0;
  WithUserInformation(state::kEnds,
                      [&result](const CUserInformation& file) { result = file.State(); });
  return result;
}

}  // namespace SigilSettingManagement
