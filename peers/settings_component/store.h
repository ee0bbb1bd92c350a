#pragma once

// The setting file and the lock on it, which the objects of one Settings share.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "peers/settings_component/setting_file.h"

namespace peers {

class Store {
 public:
  /// Returns the folder of the setting file, as a Windows path.
  const std::wstring& Folder() { return Place().folder; }

  /// Returns the setting file, to read.
  SettingFile& File();

  /// Calls `action` with the setting file, to write. Takes the lock for the time of the call.
  template <class Action>
  auto Write(Action action) {
    const auto turn = TakeTurn();
    return action(File());
  }

  /// As Write, with the existing setting file at the Windows path `path`.
  template <class Action>
  auto WriteAt(std::wstring_view path, Action action) {
    const std::filesystem::path file = HostPath(path);
    if (file == Place().file) return Write(action);
    const auto turn = TakeTurn();
    SettingFile other(file, SettingFile::Access::kWrite);
    return action(other);
  }

  void Lock();
  /// Returns false when it is not locked.
  bool UnLock();

 private:
  /// A lock that is held as long as somebody has a copy.
  using LockHold = std::shared_ptr<void>;

  /// Returns the place of the setting file. Makes its folder, if possible.
  const SettingPlace& Place();
  /// Takes the lock; returns null when this store has it already.
  LockHold TakeTurn();

  // By home: the file of a Windows path; makes a folder, where a failure shows when it is used;
  // takes the lock on the setting file, waiting for ever, or as long as a turn is worth waiting
  // for.
  static std::filesystem::path HostPath(std::wstring_view path);
  static void MakeFolder(const std::filesystem::path& folder);
  static LockHold TakeLock(const std::filesystem::path& file, bool isForTurn);

  std::optional<SettingPlace> m_place;
  std::unique_ptr<SettingFile> m_file;
  LockHold m_lock;
  unsigned m_depth = 0;
};

}  // namespace peers
