#pragma once

// An exclusive lock on a file of the machine, between processes and between threads. The kernel
// releases it when its owner dies. A missing file is made, and stays.

#include <fcntl.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "peers/descriptor.h"

namespace peers {

class FileLock {
 public:
  /// Waits for the lock without limit. Throws std::system_error when the file cannot be opened.
  static FileLock Take(const std::filesystem::path& file) {
    Descriptor descriptor = Open(file);
    while (flock(descriptor.Get(), LOCK_EX) != 0)
      if (errno != EINTR) ThrowSystemError(file.string());
    return FileLock(std::move(descriptor));
  }

  /// Returns null when the lock has not become free within `patience`. Throws like Take.
  static std::optional<FileLock> TryFor(const std::filesystem::path& file,
                                        std::chrono::milliseconds patience) {
    Descriptor descriptor = Open(file);
    if (platform::Lock(descriptor, LOCK_EX, patience)) return FileLock(std::move(descriptor));
    if (errno != EBUSY) ThrowSystemError(file.string());
    return std::nullopt;
  }

 private:
  explicit FileLock(Descriptor descriptor) : m_descriptor(std::move(descriptor)) {}

  static Descriptor Open(const std::filesystem::path& file) {
    Descriptor descriptor = platform::Open(file, O_RDWR | O_CREAT);
    if (!descriptor) ThrowSystemError(file.string());
    return descriptor;
  }

  Descriptor m_descriptor;
};

}  // namespace peers
