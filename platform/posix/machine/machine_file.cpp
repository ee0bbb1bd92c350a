#include "platform/posix/machine/machine_file.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>

#include "platform/posix/machine/machine.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnFolder = 0700;
constexpr mode_t kOwnFile = 0600;
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

Descriptor OpenRoot() {
  return Descriptor(open(MachineRoot().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

using Status = std::optional<struct stat>;

Status StatusOf(const Descriptor& file) {
  struct stat status = {};
  return file && fstat(file.Get(), &status) == 0 ? Status(status) : std::nullopt;
}

RootState StateOf(const struct stat& root) {
  return {root.st_uid, root.st_uid == geteuid(), (root.st_mode & 022) != 0};
}

/// Returns false when the new folder cannot be closed to others. One that another process has made
/// meanwhile, or that cannot be made, shows when it is opened.
bool MakeFolder(const Descriptor& parent, const std::string& name) {
  return mkdirat(parent.Get(), name.c_str(), kOwnFolder) != 0 ||
         fchmodat(parent.Get(), name.c_str(), kOwnFolder, 0) == 0;
}

/// Puts the root's status into `status`.
Descriptor EnterRoot(Missing missing, Status& status) {
  Descriptor root = OpenRoot();
  if (!root && errno == ENOENT && missing == Missing::kIsMade) {
    const Place place = FindPlace(MachineRoot(), Missing::kIsMade);
    if (!place.folder) return {};
    if (!MakeFolder(place.folder, place.name)) return {};
    root = OpenRoot();
  }
  status = StatusOf(root);
  if (!status) return {};
  const RootState state = StateOf(*status);
  return state.isOwn && !state.isOpenToOthers ? std::move(root) : FailWith(EACCES);
}

Descriptor Enter(const Descriptor& folder, const std::string& name, Missing missing) {
  Descriptor inner = OpenEntry(folder, name);
  if (!inner && errno == ENOENT && missing == Missing::kIsMade) {
    if (!MakeFolder(folder, name)) return {};
    inner = OpenEntry(folder, name);
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

Descriptor Walk(Descriptor folder, std::string_view rest, Missing missing) {
  while (folder && !rest.empty()) {
    const std::string piece(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    if (!piece.empty() && piece != ".") folder = Enter(folder, piece, missing);
  }
  return folder;
}

/// The folder that the last walk came to. While the same path below the same root leads to the same
/// folder, nothing on the way can be another account's, and the walk is spared, because a pass asks
/// for one folder thousands of times.
class LastWalk {
 public:
  Descriptor Reach(Descriptor root, const Status& top, const std::string& rest, Missing missing) {
    if (Descriptor folder = Repeat(root, top, rest)) return folder;
    Descriptor folder = Walk(std::move(root), rest, missing);
    const std::scoped_lock lock(m_mutex);
    m_rest = std::hash<std::string>()(rest);
    m_top = top;
    m_folder = StatusOf(folder);
    return folder;
  }

 private:
  static bool IsSame(const Status& one, const Status& other) {
    return one && other && one->st_dev == other->st_dev && one->st_ino == other->st_ino;
  }

  /// Returns nothing for another folder, and for one that the walk would refuse or close to others.
  Descriptor Repeat(const Descriptor& root, const Status& top, const std::string& rest) {
    const std::scoped_lock lock(m_mutex);
    if (std::hash<std::string>()(rest) != m_rest || !IsSame(top, m_top)) return {};
    open_how how = {};
    how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    const long number = syscall(SYS_openat2, root.Get(), rest.c_str(), &how, sizeof how);
    Descriptor folder(static_cast<int>(number));  // none on a kernel without openat2
    const Status found = StatusOf(folder);
    const bool isClosed = found && found->st_uid == geteuid() && (found->st_mode & kOthers) == 0;
    return isClosed && IsSame(found, m_folder) ? std::move(folder) : Descriptor();
  }

  std::mutex m_mutex;
  std::size_t m_rest = 0;  ///< The path's hash. Another path with it leads to another folder.
  Status m_top;
  Status m_folder;
};

/// A host may open files until its process ends, when objects with destructors are gone.
static_assert(std::is_trivially_destructible_v<LastWalk>);

/// Opens the folder `rest` below the root.
Descriptor Reach(const std::string& rest, Missing missing) {
  static LastWalk last;
  Status top;
  Descriptor root = EnterRoot(missing, top);
  return !root || rest.empty() ? std::move(root) : last.Reach(std::move(root), top, rest, missing);
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

Descriptor OpenElsewhere(const fs::path& path, int flags, mode_t type) {
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  Place place;
  if (writes) place = FindPlace(path, (flags & O_CREAT) != 0 ? Missing::kIsMade : Missing::kFails);
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

}  // namespace

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
  if (!rest && missing == Missing::kIsMade)
    FindPlace(path / ".", missing);  // shows when it is opened
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

Place PlaceOf(const fs::path& path) {
  const auto rest = BelowRoot(path);
  if (!rest) return FindPlace(path, Missing::kFails);
  const std::size_t name = rest->rfind('/') + 1;  // 0 without any
  return {Reach(rest->substr(0, name), Missing::kFails), rest->substr(name)};
}

std::optional<RootState> ExamineRoot() {
  const Status root = StatusOf(OpenRoot());
  return root ? std::optional(StateOf(*root)) : std::nullopt;
}

}  // namespace platform
