#pragma once

// A lock on a file that only one owner has at a time, be it in another process or another thread.
// The system takes it back from an owner that dies. The file is made when it is missing and stays.

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include "peers/descriptor.h"

namespace peers {

class FileLock {
 public:
  /// Waits for its turn without limit. std::system_error when the file cannot be had.
  static FileLock Take(const std::filesystem::path& file) {
    Descriptor descriptor = Open(file);
    while (flock(descriptor.Get(), LOCK_EX) != 0)
      if (errno != EINTR) ThrowSystemError(file.string());
    return FileLock(std::move(descriptor));
  }

  /// Nothing when the lock has not become free within `patience`.
  static std::optional<FileLock> TryFor(const std::filesystem::path& file,
                                        std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds kPause(5);
    Descriptor descriptor = Open(file);
    const auto end = std::chrono::steady_clock::now() + patience;
    while (flock(descriptor.Get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) ThrowSystemError(file.string());
      if (std::chrono::steady_clock::now() >= end) return std::nullopt;
      std::this_thread::sleep_for(kPause);
    }
    return FileLock(std::move(descriptor));
  }

 private:
  explicit FileLock(Descriptor descriptor) : m_descriptor(std::move(descriptor)) {}

  static Descriptor Open(const std::filesystem::path& file) {
    Descriptor descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (!descriptor) ThrowSystemError(file.string());
    return descriptor;
  }

  Descriptor m_descriptor;
};

}  // namespace peers
