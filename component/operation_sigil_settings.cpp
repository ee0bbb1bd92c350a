#include "component/operation_sigil_settings.h"

#include <algorithm>
#include <cwchar>
#include <new>
#include <vector>

#include "component/entry_point.h"
#include "component/names.h"
#include "logging/log.h"
#include "platform/file.h"
#include "platform/owner.h"

namespace {

constexpr wchar_t kCreateInstance[] = L"OperationSigilSettings::CreateInstance";
constexpr wchar_t kSaveCfg[] = L"OperationSigilSettings::SaveCfg";
constexpr wchar_t kGetPrinterSettings[] = L"OperationSigilSettings::GetPrinterSettingsOpe";
constexpr wchar_t kSetUseContentLog[] = L"OperationSigilSettings::SetUseContentLog";
constexpr wchar_t kLock[] = L"OperationSigilSettings::SigilLock";
constexpr wchar_t kUnLock[] = L"OperationSigilSettings::SigilUnLock";
constexpr wchar_t kGetFolder[] = L"OperationSigilSettings::GetSettingFileDirPath";

constexpr LogMessage kNoInstance = {4, 153400010, kCreateInstance,
                                    L"SigilSettingsインスタンス取得ができない。"};
constexpr LogMessage kSaved = {1, 153400020, kSaveCfg, L"設定ファイルの保存を行いました。"};
constexpr LogMessage kNotSaved = {4, 153400030, kSaveCfg, L"設定ファイルの保存に失敗しました。"};
constexpr LogMessage kNoRecord = {5, 153400160, kGetPrinterSettings,
                                  L"PrinterSettingsインスタンス取得失敗 プリンタ名：%s"};
constexpr LogMessage kRecordOpened = {1, 153400170, kGetPrinterSettings,
                                      L"PrinterSettingsインスタンス取得成功 プリンタ名：%s"};
constexpr LogMessage kContentLogSet = {1, 153400200, kSetUseContentLog,
                                       L"印刷内容ログ記録コールバック設定。設定値[%d]"};
constexpr LogMessage kLocking = {1, 153400280, kLock, L"Settingsインスタンス：ロック開始"};
constexpr LogMessage kLocked = {1, 153400290, kLock, L"Settingsインスタンス：ロック中"};
constexpr LogMessage kUnlocked = {1, 153400300, kUnLock, L"Settingsインスタンス：ロック解除"};
constexpr LogMessage kFolderAsked = {4, 99999999, kGetFolder, L"GetSettingFileDirPath 到着"};
constexpr LogMessage kNoFolderLength = {4, 153400303, kGetFolder,
                                        L"設定ファイル格納ディレクトリパス取得失敗"};
constexpr LogMessage kNoFolder = {4, 153400302, kGetFolder,
                                  L"設定ファイル格納ディレクトリパス取得失敗"};
constexpr LogMessage kFolderGot = {1, 153400301, kGetFolder,
                                   L"設定ファイル格納ディレクトリパス取得成功：【%s】"};

using Entry = void (*)();

constexpr auto kFreeLibrary = [](HMODULE module) { FreeLibrary(module); };
using CModule = Owner<HMODULE, kFreeLibrary>;

}  // namespace

/// The loaded component; nulls where the library or an entry is missing.
struct ComponentRecord {
  CModule hModule;
  Sigil::CreateInstanceFunction pfnCreateInstance = nullptr;
  // Looked up with the first, but never called.
  Entry pfnMergeUserStoreWatermarks = nullptr;
  Entry pfnGetVersionDate = nullptr;
};

namespace {

/// Returns null when the component is not in the host executable's folder. The system cuts a host
/// path that is too long; one that is cut in the executable's name still has the right folder.
HMODULE LoadComponent() {
  wchar_t path[1024] = {};
  // Without a folder the loader would search the system's.
  if (GetModuleFileNameW(nullptr, path, MAX_PATH) == 0) return nullptr;
  PathRemoveFileSpecW(path);
  PathAppendW(path, kComponentFile);
  const HMODULE module = LoadLibraryW(path);
  return IsLoaded(module) ? module : nullptr;
}

}  // namespace

OperationSigilSettings::OperationSigilSettings() {
  try {
    m_pComponent = std::make_shared<ComponentRecord>();
  } catch (const std::bad_alloc&) {
    return;
  }
  const HMODULE module = LoadComponent();
  if (module == nullptr) return;
  m_pComponent->hModule = CModule(module);
  m_pComponent->pfnCreateInstance =
      EntryPoint<Sigil::CreateInstanceFunction>(module, kCreateInstanceName);
  m_pComponent->pfnMergeUserStoreWatermarks =
      EntryPoint<Entry>(module, "SigilMergeUserStoreWatermarks");
  m_pComponent->pfnGetVersionDate = EntryPoint<Entry>(module, "SigilGetVersionDate");
}

bool OperationSigilSettings::CreateInstance() {
  if (!m_pComponent) return false;
  const auto pfnCreate = m_pComponent->pfnCreateInstance;
  if (pfnCreate == nullptr ||
      CallForeign(pfnCreate, &Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity,
                  reinterpret_cast<void**>(m_pSettings.Out())) != 0 ||
      !m_pSettings) {
    Log(kNoInstance);
    return false;
  }
  return true;
}

void OperationSigilSettings::ReleaseInstance() {
  m_pSettings.Reset();
}

void OperationSigilSettings::SigilLock() {
  if (!m_pSettings) return;
  Log(kLocking);
  m_pSettings->Lock();
  Log(kLocked);
}

void OperationSigilSettings::SigilUnLock() {
  if (!m_pSettings) return;
  m_pSettings->UnLock();
  Log(kUnlocked);
}

bool OperationSigilSettings::SaveCfg() {
  if (!m_pSettings) return false;
  m_pSettings->Commit();
  const bool saved = !Sigil::Failed(m_pSettings->Save(0));
  Log(saved ? kSaved : kNotSaved);
  return saved;
}

bool OperationSigilSettings::GetPrinterSettingsOpe(const wchar_t* printer,
                                                   Sigil::PrinterSettings** record) {
  if (m_pSettings->GetPrinterSettings(printer, record) != 0 || *record == nullptr) {
    Log(kNoRecord, printer);
    return false;
  }
  Log(kRecordOpened, printer);
  return true;
}

void OperationSigilSettings::SetUseContentLog(BYTE flag) {
  m_pSettings->SetUseContentLog(flag);
  m_pSettings->Commit();
  Log(kContentLogSet, flag);
}

std::uint32_t OperationSigilSettings::GetSettingFileDirPath(wchar_t* folder) {
  // The longest path of Windows. It bounds the memory, because the component may give any length.
  constexpr std::uint32_t kLongestPath = 32768;
  Log(kFolderAsked);
  std::uint32_t length = kFolderCapacity;
  if (Sigil::Failed(m_pSettings->GetSettingFileDir(nullptr, &length))) Log(kNoFolderLength);

  length = std::min(length, kLongestPath);
  std::vector<wchar_t> text(std::max(length, kFolderCapacity) + 1);
  const std::int32_t result = m_pSettings->GetSettingFileDir(text.data(), &length);
  text.back() = L'\0';
  // The text's own length counts, because not every component includes the terminator in its
  // length.
  const auto copied = static_cast<std::uint32_t>(std::wcslen(text.data())) + 1;
  if (Sigil::Failed(result) || copied > kFolderCapacity) {
    Log(kNoFolder);
    return 0;
  }
  std::wmemcpy(folder, text.data(), copied);
  Log(kFolderGot, folder);
  return copied;
}
