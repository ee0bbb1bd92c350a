#include "platform/posix/machine/whole_file.h"

#include <fcntl.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/machine/draft.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/size_signal.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void Throw(const fs::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

}  // namespace

void WriteAll(int file, std::string_view bytes, const fs::path& path) {
  while (!bytes.empty()) {
    const ssize_t step = write(file, bytes.data(), bytes.size());
    if (step < 0 && errno != EINTR) Throw(path);
    if (step > 0) bytes.remove_prefix(static_cast<std::size_t>(step));
  }
}

std::optional<std::string> ReadWholeFile(const fs::path& path) {
  const Descriptor file = Open(path, O_RDONLY);
  if (!file && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;
  if (!file) Throw(path);
  std::string bytes;
  char block[0x4000];
  for (;;) {
    const ssize_t step = read(file.Get(), block, sizeof block);
    if (step == 0) return bytes;
    if (step < 0 && errno != EINTR) Throw(path);
    if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
    if (bytes.size() > kLargestFile) {
      errno = EFBIG;
      Throw(path);
    }
  }
}

void ReplaceWholeFile(const fs::path& path, std::string_view bytes) {
  const NoSizeSignal guard;
  Draft draft(path);
  WriteAll(draft.File().Get(), bytes, path);
  if (fsync(draft.File().Get()) != 0) Throw(path);
  draft.Replace();
}

void ChangeWholeFile(const fs::path& path,
                     const std::function<std::string(const std::optional<std::string>&)>& change) {
  const Descriptor folder = OpenFolder(path.parent_path(), Missing::kFails);
  if (!folder || !Lock(folder, LOCK_EX, kLockPatience)) Throw(path);
  const auto before = ReadWholeFile(path);
  const std::string after = change(before);
  if (after != before) ReplaceWholeFile(path, after);
}

}  // namespace platform
