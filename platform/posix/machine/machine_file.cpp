#include "platform/posix/machine/machine_file.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <thread>

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

/// The way from the root to `path`, whose pieces are names. Null when `path` lies elsewhere.
std::optional<std::string> BelowRoot(const fs::path& path) {
  const std::string root = MachineRoot().string() + "/";
  if (!path.native().starts_with(root)) return std::nullopt;
  std::string rest = path.native().substr(root.size());
  if (("/" + rest + "/").find("/../") != std::string::npos) return std::nullopt;
  return rest;
}

mode_t ModeFor(const fs::path& file) {
  if (IsInMachine(file)) return kOwnFile;
  struct stat status = {};
  if (stat(file.c_str(), &status) == 0) return status.st_mode & 0777;
  const mode_t mask = umask(kOthers);
  umask(mask);
  return 0666 & ~mask;
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
    const fs::path path = MachineRoot();
    std::error_code error;  // shows at the second try
    fs::create_directories(path.parent_path(), error);
    if (mkdir(path.c_str(), kOwnFolder) == 0) chmod(path.c_str(), kOwnFolder);
    root = OpenRoot();
  }
  const auto state = StateOf(root);
  if (state && (!state->isOwn || state->isOpenToOthers)) return FailWith(EACCES);
  return root;
}

Descriptor Enter(const Descriptor& folder, const std::string& name, Missing missing) {
  const auto open = [&] {
    return Descriptor(openat(folder.Get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  };
  Descriptor inner = open();
  if (!inner && errno == ENOENT && missing == Missing::kIsMade) {
    if (mkdirat(folder.Get(), name.c_str(), kOwnFolder) == 0 &&
        fchmodat(folder.Get(), name.c_str(), kOwnFolder, 0) != 0)
      return {};
    inner = open();
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

/// The folder `rest` below the root.
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

Descriptor OpenElsewhere(const fs::path& path, int flags, mode_t type) {
  const auto open = [&] { return Descriptor(::open(path.c_str(), flags, kOwnFile)); };
  Descriptor file = open();
  if (!file && errno == ENOENT && (flags & O_CREAT) != 0) {
    std::error_code error;  // shows at the second try
    fs::create_directories(path.parent_path(), error);
    file = open();
  }
  struct stat status = {};
  if (!file || fstat(file.Get(), &status) != 0) return {};
  const mode_t found = status.st_mode & S_IFMT;
  const bool isTerminal = found == S_IFCHR && (flags & O_ACCMODE) != O_RDONLY;
  if (type != 0 && found != type && !isTerminal) return FailWith(EACCES);
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

Draft::Draft(const fs::path& target)
    : m_name(target.string() + ".XXXXXX"), m_file(mkostemp(m_name.data(), O_CLOEXEC)) {
  if (!m_file || fchmod(m_file.Get(), ModeFor(target)) != 0)
    throw std::system_error(errno, std::generic_category(), target.string());
}

std::optional<RootState> ExamineRoot() {
  return StateOf(OpenRoot());
}

}  // namespace platform
