#include "platform/posix/machine/place.h"

#include <fcntl.h>

#include <cerrno>
#include <climits>
#include <optional>

namespace platform {

namespace {

namespace fs = std::filesystem;

Place FailWith(int error) {
  errno = error;
  return {};
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

}  // namespace

int Descriptor::AboveStandardStreams(int file) {
  if (file < 0 || file > STDERR_FILENO) return file;
  const int above = fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int error = errno;
  close(file);
  errno = error;
  return above;
}

Descriptor OpenEntry(const Descriptor& folder, const std::string& name) {
  return Descriptor(openat(folder.Get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
}

Place FindPlace(const fs::path& path, Missing missing) {
  constexpr int kMostLinks = 40;  // as the kernel
  std::string rest = path.has_filename() ? path.native() : path.native() + ".";
  Descriptor folder = OpenStart(rest);
  for (int links = 0; folder;) {
    if (rest.size() >= PATH_MAX) return FailWith(ENAMETOOLONG);
    const std::string name = TakePiece(rest);
    Descriptor found = OpenEntry(folder, name);
    if (!found && errno == ENOENT && rest.empty()) return {std::move(folder), name};
    if (!found && errno == ENOENT && missing == Missing::kIsMade) {
      mkdirat(folder.Get(), name.c_str(), 0700);
      found = OpenEntry(folder, name);
    }
    if (!found) return {};
    if (IsLink(found)) {
      const auto target = TargetOf(folder, found);
      if (!target) return {};
      if (++links > kMostLinks) return FailWith(ELOOP);
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

bool IsKept(const Descriptor& folder, const struct stat& file) {
  struct stat around = {};
  return fstat(folder.Get(), &around) != 0 ||
         (IsPlanted(around, file) && (around.st_mode & S_ISVTX) != 0);
}

}  // namespace platform
