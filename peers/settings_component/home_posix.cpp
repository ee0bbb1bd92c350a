// What the component asks of Linux, apart from the setting file itself.

#include <sys/random.h>
#include <unistd.h>

#include <stdexcept>

#include "peers/file_lock.h"
#include "peers/settings_component/guid.h"
#include "peers/settings_component/store.h"
#include "platform/posix/machine/machine.h"

namespace peers {

namespace fs = std::filesystem;

std::string NewGuid() {
  GUID guid{};
  if (getrandom(&guid, sizeof guid, 0) != sizeof guid) ThrowSystemError("getrandom");
  guid.Data3 = static_cast<WORD>((guid.Data3 & 0x0FFF) | 0x4000);
  guid.Data4[0] = static_cast<BYTE>((guid.Data4[0] & 0x3F) | 0x80);
  return GuidText(guid);
}

fs::path Store::HostPath(std::wstring_view path) {
  return platform::HostPath(path);
}

/// A folder that is there is looked at when a file in it is opened.
void Store::MakeFolder(const fs::path& folder) {
  if (access(folder.c_str(), F_OK) != 0) platform::OpenFolder(folder, platform::Missing::kIsMade);
}

Store::LockHold Store::TakeLock(const fs::path& file, bool isForTurn) {
  constexpr std::chrono::seconds kPatience(10);
  const fs::path lockFile = fs::path(file) += ".lock";
  if (!isForTurn) return std::make_shared<FileLock>(FileLock::Take(lockFile));
  std::optional<FileLock> turn = FileLock::TryFor(lockFile, kPatience);
  if (!turn) throw std::runtime_error("another holds the lock of the setting file");
  return std::make_shared<FileLock>(std::move(*turn));
}

}  // namespace peers
