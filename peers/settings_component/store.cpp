#include "peers/settings_component/store.h"

namespace peers {

const SettingPlace& Store::Place() {
  if (!m_place) {
    m_place = FindSettingPlace();
    MakeFolder(m_place->file.parent_path());
  }
  return *m_place;
}

SettingFile& Store::File() {
  if (!m_file) m_file = std::make_unique<SettingFile>(Place().file, SettingFile::Access::kCreate);
  return *m_file;
}

void Store::Lock() {
  if (!m_lock) m_lock = TakeLock(Place().file, false);
  ++m_depth;
}

bool Store::UnLock() {
  if (m_depth == 0) return false;
  if (--m_depth == 0) m_lock.reset();
  return true;
}

Store::LockHold Store::TakeTurn() {
  return m_lock ? nullptr : TakeLock(Place().file, true);
}

}  // namespace peers
