#include "platform/posix/machine/draft.h"

#include <fcntl.h>
#include <sys/random.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <system_error>

#include "platform/posix/machine/machine_file.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnFile = 0600;
constexpr mode_t kNewFile = 0666;  // less the umask

/// Makes a file with a new name: `name`, a dot and six digits.
Descriptor MakeNew(const Descriptor& folder, std::string& name, mode_t mode) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
  const std::string begin = name + ".";
  for (;;) {
    std::uint32_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) return {};
    char digits[7];
    std::snprintf(digits, sizeof digits, "%06x", number & 0xFFFFFF);
    name = begin + digits;
    Descriptor file(openat(folder.Get(), name.c_str(), kFlags, mode));
    if (file || errno != EEXIST) return file;
  }
}

[[noreturn]] void Throw(const fs::path& path, int error = errno) {
  throw std::system_error(error, std::generic_category(), path.string());
}

/// Returns the mode that a draft of `target` must have; null: that of any new file. Throws for a
/// file that must not be replaced.
std::optional<mode_t> ModeFor(const fs::path& target, const Place& place) {
  struct stat status = {};
  if (IsInMachine(target)) return kOwnFile;
  if (fstatat(place.folder.Get(), place.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
    return std::nullopt;
  if (!S_ISREG(status.st_mode) || IsKept(place.folder, status)) Throw(target, EACCES);
  if (status.st_uid != geteuid()) return std::nullopt;
  return status.st_mode & 0777;
}

}  // namespace

Draft::Draft(const fs::path& target) : m_target(target), m_place(PlaceOf(target)) {
  if (!m_place.folder) Throw(target);
  const std::optional<mode_t> mode = ModeFor(target, m_place);
  m_name = m_place.name;
  m_file = MakeNew(m_place.folder, m_name, mode ? kOwnFile : kNewFile);
  if (!m_file || (mode && fchmod(m_file.Get(), *mode) != 0)) Throw(target);
}

void Draft::Replace() {
  const int folder = m_place.folder.Get();
  if (renameat(folder, m_name.c_str(), folder, m_place.name.c_str()) != 0) Throw(m_target);
}

bool Draft::Link() {
  const int folder = m_place.folder.Get();
  const bool isLinked = linkat(folder, m_name.c_str(), folder, m_place.name.c_str(), 0) == 0;
  if (!isLinked && errno != EEXIST) Throw(m_target);
  return isLinked;
}

}  // namespace platform
