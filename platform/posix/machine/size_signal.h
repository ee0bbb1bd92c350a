#pragma once

// Writing beyond the limit on the size of files (RLIMIT_FSIZE) ends the process by SIGXFSZ, unless
// the signal is held back; the write then fails with EFBIG. A library must not end its host, so
// everything that lets a file grow does so under this guard.

#include <signal.h>

namespace platform {

/// While it lives, SIGXFSZ is blocked in this thread, and one that came meanwhile is discarded at
/// its end. One that lives within another does nothing.
class NoSizeSignal {
 public:
  NoSizeSignal();
  ~NoSizeSignal();
  NoSizeSignal(const NoSizeSignal&) = delete;
  NoSizeSignal& operator=(const NoSizeSignal&) = delete;

 private:
  sigset_t m_before;
  bool m_wasPending = false;
};

}  // namespace platform
