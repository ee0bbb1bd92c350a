#pragma once

// What the objects of one Settings share: the setting file and the lock on it.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "peers/file_lock.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/machine.h"

namespace peers {

class Store {
 public:
  /// As a Windows path.
  const std::wstring& Folder() { return Place().folder; }

  /// To read.
  SettingFile& File();

  /// Calls `action` with the setting file to write to, in this store's turn.
  template <class Action>
  auto Write(Action action) {
    const auto turn = TakeTurn();
    return action(File());
  }

  /// The same with the setting file at the Windows path `path`, which must be there.
  template <class Action>
  auto WriteAt(std::wstring_view path, Action action) {
    const std::filesystem::path file = platform::HostPath(path);
    if (file == Place().file) return Write(action);
    const auto turn = TakeTurn();
    SettingFile other(file, SettingFile::Access::kWrite);
    return action(other);
  }

  void Lock();
  /// False when it is not locked.
  bool UnLock();

 private:
  /// The folder is there afterwards, if it can be made.
  const SettingPlace& Place();
  std::filesystem::path LockFile();
  /// Nothing when the lock is held anyway.
  std::optional<FileLock> TakeTurn();

  std::optional<SettingPlace> m_place;
  std::unique_ptr<SettingFile> m_file;
  std::optional<FileLock> m_lock;
  unsigned m_depth = 0;
};

}  // namespace peers
