#pragma once

// The stretches of a record that the passes share.

#include <string>

#include "tests/support/record.h"

namespace tests {

inline const std::string kMutexTaken = R"(
2 100909 GetMutex_SigilSetting "Sigil設定ファイル用MUTEXロックOK"
)";

inline const std::string kInstance = R"(
component loaded
SigilCreateInstance(Settings)
)";

inline const std::string kLocked = R"(
1 153400280 OperationSigilSettings::SigilLock "Settingsインスタンス：ロック開始"
Settings::Lock()
1 153400290 OperationSigilSettings::SigilLock "Settingsインスタンス：ロック中"
)";

inline const std::string kOpened = kMutexTaken + kInstance + kLocked;

inline const std::string kSaved = R"(
Settings::Commit()
Settings::Save(0)
1 153400020 OperationSigilSettings::SaveCfg "設定ファイルの保存を行いました。"
)";

inline const std::string kNotSaved = R"(
Settings::Commit()
Settings::Save(0)
4 153400030 OperationSigilSettings::SaveCfg "設定ファイルの保存に失敗しました。"
)";

inline const std::string kUnlocked = R"(
Settings::UnLock()
1 153400300 OperationSigilSettings::SigilUnLock "Settingsインスタンス：ロック解除"
Settings::Release()
)";

/// Mutex and descriptor are given back.
inline const std::string kMutexGiven = R"(
ReleaseMutex
CloseHandle
LocalFree
)";

inline const std::string kUnloaded = "component unloaded\n";

/// An exception took the instance and the library down before its handler gave back the rest.
inline const std::string kUnwound = "Settings::Release()\n" + kUnloaded + kMutexGiven;

inline const std::string kNoInstance =
    "4 153400010 OperationSigilSettings::CreateInstance "
    "\"SigilSettingsインスタンス取得ができない。\"\n";

/// No mutex: created or not, with the pass's own line to follow.
inline const std::string kNotCreated = R"(
5 100907 GetMutex_SigilSetting "Sigil設定ファイルへのロックが取得できませんでした。"
LocalFree
)";

inline const std::string kNotAcquired = R"(
5 100908 GetMutex_SigilSetting "Sigil設定ファイルへのロックが取得できませんでした。"
CloseHandle
LocalFree
)";

inline const std::string kPrintersListed = R"(
EnumPrintersW
EnumPrintersW
2 153100020 SigilSettingManagement::GetPrinterInfoList "プリンタ情報取得に成功しました。"
)";

inline const std::string kPrintersNotListed = R"(
EnumPrintersW
EnumPrintersW
4 153100010 SigilSettingManagement::GetPrinterInfoList code 5 "プリンタ情報取得に失敗しました。"
)";

/// An instance is asked for the setting folder and released.
inline const std::string kFolderLearned = R"(
SigilCreateInstance(Settings)
4 99999999 OperationSigilSettings::GetSettingFileDirPath "GetSettingFileDirPath 到着"
Settings::GetSettingFileDir(null, 256)
Settings::GetSettingFileDir(buffer, 13)
1 153400301 OperationSigilSettings::GetSettingFileDirPath "設定ファイル格納ディレクトリパス取得成功：【C:\SigilTest】"
Settings::Release()
)";

/// Exclude lists that are empty are emptied all the same.
inline const std::string kExcludesCleared = R"(
Settings::GetExcludePrinterCount()
Settings::GetSecondExcludeCount()
Settings::Commit()
Settings::Save(0)
1 153400120 OperationSigilSettings::AllDeleteExclude "除外プリンタの全削除して設定ファイルに保存しました。"
)";

}  // namespace tests
