#include "platform/posix/machine/whole_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/posix/handle.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Throw(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

void WriteAll(int file, std::string_view bytes, const fs::path& path) {
  while (!bytes.empty()) {
    const ssize_t step = write(file, bytes.data(), bytes.size());
    if (step < 0 && errno != EINTR) Throw(path);
    if (step > 0) bytes.remove_prefix(static_cast<std::size_t>(step));
  }
}

/// Puts a new file in the place of `path`. Its name is free for use, since the folder is locked.
void Replace(const fs::path& path, std::string_view bytes) {
  struct stat status;
  const bool isThere = stat(path.c_str(), &status) == 0;
  const std::string name = path.string() + "." + std::to_string(getpid()) + ".new";
  unlink(name.c_str());
  const Descriptor file(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!file) Throw(path);
  try {
    WriteAll(file.Get(), bytes, path);
    if ((isThere && fchmod(file.Get(), status.st_mode & 07777) != 0) || fsync(file.Get()) != 0 ||
        rename(name.c_str(), path.c_str()) != 0)
      Throw(path);
  } catch (...) {
    unlink(name.c_str());
    throw;
  }
}

}  // namespace

std::optional<std::string> ReadWholeFile(const fs::path& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
  if (!file) Throw(path);
  std::string bytes;
  char block[0x4000];
  for (;;) {
    const ssize_t step = read(file.Get(), block, sizeof block);
    if (step == 0) return bytes;
    if (step < 0 && errno != EINTR) Throw(path);
    if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
  }
}

void ChangeWholeFile(
    const fs::path& path,
    const std::function<std::optional<std::string>(const std::optional<std::string>&)>& change) {
  std::error_code ignored;
  const fs::path target = fs::is_symlink(path, ignored) ? fs::canonical(path) : path;
  const Descriptor folder(open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) Throw(path);
  while (flock(folder.Get(), LOCK_EX) != 0)
    if (errno != EINTR) Throw(path);
  const auto before = ReadWholeFile(target);
  const auto after = change(before);
  if (after && after != before) Replace(target, *after);
}

}  // namespace platform
