#include "platform/posix/machine/machine_file.h"

#include <fcntl.h>
#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <string_view>
#include <system_error>
#include <thread>

#include "platform/posix/machine/machine.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnFolder = 0700;
constexpr mode_t kOwnFile = 0600;
constexpr mode_t kNewFile = 0666;  // less the umask
constexpr mode_t kOthers = 0077;

Descriptor FailWith(int error) {
  errno = error;
  return {};
}

/// Returns the path from the root to `path`, without `..`; null when `path` lies elsewhere.
std::optional<std::string> BelowRoot(const fs::path& path) {
  const std::string root = MachineRoot().string() + "/";
  if (!path.native().starts_with(root)) return std::nullopt;
  std::string rest = path.native().substr(root.size());
  if (("/" + rest + "/").find("/../") != std::string::npos) return std::nullopt;
  return rest;
}

/// Takes the first piece of a path off, with the slashes around it.
std::string TakePiece(std::string& path) {
  path.erase(0, path.find_first_not_of('/'));
  const std::string piece = path.substr(0, path.find('/'));
  path.erase(0, path.find_first_not_of('/', piece.size()));
  return piece;
}

Descriptor OpenStart(const std::string& path) {
  return Descriptor(open(path.starts_with('/') ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
}

Descriptor OpenPiece(const Descriptor& folder, const std::string& name) {
  return Descriptor(openat(folder.Get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

/// Returns whether an account that owns neither the folder nor the process may have put the entry
/// into the folder.
bool IsPlanted(const struct stat& folder, const struct stat& entry) {
  return (folder.st_mode & 022) != 0 && entry.st_uid != folder.st_uid && entry.st_uid != geteuid();
}

/// Returns the target of a link that is followed, else null, with errno set.
std::optional<std::string> TargetOf(const Descriptor& folder, const Descriptor& link) {
  struct stat around = {};
  struct stat status = {};
  if (fstat(folder.Get(), &around) != 0 || fstat(link.Get(), &status) != 0) return std::nullopt;
  char target[PATH_MAX];
  const ssize_t size = readlinkat(link.Get(), "", target, sizeof target);
  if (size < 0) return std::nullopt;
  errno = EACCES;
  if (IsPlanted(around, status)) return std::nullopt;
  return std::string(target, static_cast<std::size_t>(size));
}

bool IsLink(const Descriptor& file) {
  struct stat status = {};
  return fstat(file.Get(), &status) == 0 && S_ISLNK(status.st_mode);
}

/// Returns the place of a file that is to be written, which is no link. Without a folder in it
/// errno is set.
Place Find(const fs::path& path, Missing missing) {
  constexpr int kMostLinks = 40;  // as the kernel
  std::string rest = path.has_filename() ? path.native() : path.native() + ".";
  Descriptor folder = OpenStart(rest);
  for (int links = 0; folder;) {
    const std::string name = TakePiece(rest);
    Descriptor found = OpenPiece(folder, name);
    if (!found && errno == ENOENT && rest.empty()) return {std::move(folder), name};
    if (!found && errno == ENOENT && missing == Missing::kIsMade) {
      mkdirat(folder.Get(), name.c_str(), kOwnFolder);
      found = OpenPiece(folder, name);
    }
    if (!found) return {};
    if (IsLink(found)) {
      const auto target = TargetOf(folder, found);
      if (!target) return {};
      if (++links > kMostLinks) return {FailWith(ELOOP), {}};
      if (target->starts_with('/')) folder = OpenStart(*target);
      rest = rest.empty() ? *target : *target + "/" + rest;
    } else if (rest.empty()) {
      return {std::move(folder), name};
    } else {
      folder = std::move(found);
    }
  }
  return {};
}

Descriptor OpenRoot() {
  return Descriptor(open(MachineRoot().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

std::optional<RootState> StateOf(const Descriptor& root) {
  struct stat status = {};
  if (!root || fstat(root.Get(), &status) != 0) return std::nullopt;
  return RootState{status.st_uid, status.st_uid == geteuid(), (status.st_mode & 022) != 0};
}

Descriptor EnterRoot(Missing missing) {
  Descriptor root = OpenRoot();
  if (!root && errno == ENOENT && missing == Missing::kIsMade) {
    const Place place = Find(MachineRoot(), Missing::kIsMade);
    if (!place.folder) return {};
    if (mkdirat(place.folder.Get(), place.name.c_str(), kOwnFolder) == 0 &&
        fchmodat(place.folder.Get(), place.name.c_str(), kOwnFolder, 0) != 0)
      return {};
    root = OpenRoot();
  }
  const auto state = StateOf(root);
  if (state && (!state->isOwn || state->isOpenToOthers)) return FailWith(EACCES);
  return root;
}

Descriptor Enter(const Descriptor& folder, const std::string& name, Missing missing) {
  Descriptor inner = OpenPiece(folder, name);
  if (!inner && errno == ENOENT && missing == Missing::kIsMade) {
    if (mkdirat(folder.Get(), name.c_str(), kOwnFolder) == 0 &&
        fchmodat(folder.Get(), name.c_str(), kOwnFolder, 0) != 0)
      return {};
    inner = OpenPiece(folder, name);
  }
  struct stat status = {};
  if (!inner || fstat(inner.Get(), &status) != 0) return {};
  if (status.st_uid != geteuid() || S_ISLNK(status.st_mode)) return FailWith(EACCES);
  if (!S_ISDIR(status.st_mode)) return FailWith(ENOTDIR);
  if ((status.st_mode & kOthers) != 0 &&
      fchmodat(folder.Get(), name.c_str(), status.st_mode & kOwnFolder, 0) != 0 && errno != EROFS)
    return {};
  return inner;
}

/// Opens the folder `rest` below the root.
Descriptor Reach(std::string_view rest, Missing missing) {
  Descriptor folder = EnterRoot(missing);
  while (folder && !rest.empty()) {
    const std::string piece(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    if (!piece.empty() && piece != ".") folder = Enter(folder, piece, missing);
  }
  return folder;
}

Descriptor OpenBelow(const std::string& rest, int flags, mode_t type) {
  const bool makes = (flags & O_CREAT) != 0;
  const std::size_t name = rest.rfind('/') + 1;  // 0 without any
  const Descriptor folder = Reach(rest.substr(0, name), makes ? Missing::kIsMade : Missing::kFails);
  if (!folder) return {};
  Descriptor file(openat(folder.Get(), rest.c_str() + name, flags | O_NOFOLLOW, kOwnFile));
  struct stat status = {};
  // A link gives ELOOP, a FIFO that nobody reads and a socket ENXIO.
  if (!file) return FailWith(errno == ELOOP || errno == ENXIO ? EACCES : errno);
  if (fstat(file.Get(), &status) != 0) return {};
  if (status.st_uid != geteuid() || (type != 0 && (status.st_mode & S_IFMT) != type))
    return FailWith(EACCES);
  if (makes && (status.st_mode & 0777) != kOwnFile && fchmod(file.Get(), kOwnFile) != 0) return {};
  return file;
}

/// Returns whether the file is another account's in a folder in which it could not be replaced.
bool IsKept(const Descriptor& folder, const struct stat& file) {
  struct stat around = {};
  return fstat(folder.Get(), &around) != 0 ||
         (IsPlanted(around, file) && (around.st_mode & S_ISVTX) != 0);
}

Descriptor OpenElsewhere(const fs::path& path, int flags, mode_t type) {
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  Place place;
  if (writes) place = Find(path, (flags & O_CREAT) != 0 ? Missing::kIsMade : Missing::kFails);
  if (writes && !place.folder) return {};
  Descriptor file(writes
                      ? openat(place.folder.Get(), place.name.c_str(), flags | O_NOFOLLOW, kOwnFile)
                      : open(path.c_str(), flags));
  struct stat status = {};
  if (!file || fstat(file.Get(), &status) != 0) return {};
  const mode_t found = status.st_mode & S_IFMT;
  const bool isTerminal = found == S_IFCHR && writes;
  if (type != 0 && found != type && !isTerminal) return FailWith(EACCES);
  if (found == S_IFREG && writes && IsKept(place.folder, status)) return FailWith(EACCES);
  return file;
}

Place PlaceOf(const fs::path& path) {
  const auto rest = BelowRoot(path);
  if (!rest) return Find(path, Missing::kFails);
  const std::size_t name = rest->rfind('/') + 1;  // 0 without any
  return {Reach(rest->substr(0, name), Missing::kFails), rest->substr(name)};
}

/// Makes a file with a new name, which begins with `name`.
Descriptor MakeNew(const Descriptor& folder, std::string& name, mode_t mode) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
  const std::string begin = name + ".";
  for (;;) {
    std::uint32_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) return {};
    name = begin + std::to_string(number);
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

int Descriptor::AboveStandardStreams(int file) {
  if (file < 0 || file > STDERR_FILENO) return file;
  const int above = fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(file);
  errno = error;
  return above;
}

bool IsInMachine(const fs::path& path) {
  return BelowRoot(path).has_value();
}

Descriptor Open(const fs::path& path, int flags, mode_t type) {
  flags |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  if (const auto rest = BelowRoot(path)) return OpenBelow(*rest, flags, type);
  return OpenElsewhere(path, flags, type);
}

Descriptor OpenFolder(const fs::path& path, Missing missing) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  const auto rest = path == MachineRoot() ? std::string() : BelowRoot(path);
  if (!rest && missing == Missing::kIsMade) Find(path / ".", missing);  // shows when it is opened
  if (!rest) return Descriptor(open(path.c_str(), kFlags));
  const Descriptor folder = Reach(*rest, missing);
  return folder ? Descriptor(openat(folder.Get(), ".", kFlags)) : Descriptor();
}

bool Lock(const Descriptor& file, int operation, std::chrono::milliseconds patience) {
  constexpr std::chrono::milliseconds kPause(5);
  const auto end = std::chrono::steady_clock::now() + patience;
  while (flock(file.Get(), operation | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return false;
    if (std::chrono::steady_clock::now() >= end) {
      errno = EBUSY;
      return false;
    }
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

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

std::optional<RootState> ExamineRoot() {
  return StateOf(OpenRoot());
}

}  // namespace platform
