#include "peers/settings_component/store.h"

#include <stdexcept>

namespace peers {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience(10);

const std::wstring& Store::Folder() {
  if (m_folder.empty()) {
    m_folder = SettingFolder();
    m_path = platform::HostPath(m_folder) / kSettingFileName;
    std::error_code failed;  // shows as soon as the folder is used
    fs::create_directories(m_path.parent_path(), failed);
  }
  return m_folder;
}

const fs::path& Store::OwnFile() {
  Folder();
  return m_path;
}

fs::path Store::LockFile() {
  return fs::path(OwnFile()) += ".lock";
}

SettingFile& Store::File() {
  if (!m_file) m_file = std::make_unique<SettingFile>(OwnFile(), SettingFile::Access::kCreate);
  return *m_file;
}

void Store::Lock() {
  if (!m_lock) m_lock = FileLock::Take(LockFile());
  ++m_depth;
}

bool Store::UnLock() {
  if (m_depth == 0) return false;
  if (--m_depth == 0) m_lock.reset();
  return true;
}

std::optional<FileLock> Store::TakeTurn() {
  if (m_lock) return std::nullopt;
  std::optional<FileLock> turn = FileLock::TryFor(LockFile(), kPatience);
  if (!turn) throw std::runtime_error("another holds the lock of the setting file");
  return turn;
}

}  // namespace peers
