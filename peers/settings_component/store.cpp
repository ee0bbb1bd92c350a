#include "peers/settings_component/store.h"

#include <stdexcept>

namespace peers {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience(10);

const SettingPlace& Store::Place() {
  if (!m_place) {
    m_place = FindSettingPlace();
    // A failure shows when the folder is used.
    platform::OpenFolder(m_place->file.parent_path(), platform::Missing::kIsMade);
  }
  return *m_place;
}

fs::path Store::LockFile() {
  return fs::path(Place().file) += ".lock";
}

SettingFile& Store::File() {
  if (!m_file) m_file = std::make_unique<SettingFile>(Place().file, SettingFile::Access::kCreate);
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
