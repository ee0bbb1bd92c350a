#include "platform/posix/machine/size_signal.h"

#include <cerrno>
#include <ctime>

namespace platform {

namespace {

thread_local unsigned t_depth = 0;

sigset_t SizeSignal() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGXFSZ);
  return set;
}

}  // namespace

NoSizeSignal::NoSizeSignal() {
  if (t_depth++ > 0) return;
  const sigset_t set = SizeSignal();
  pthread_sigmask(SIG_BLOCK, &set, &m_before);
  if (sigismember(&m_before, SIGXFSZ) != 1) return;  // it would have been delivered
  sigset_t pending;
  sigpending(&pending);
  m_wasPending = sigismember(&pending, SIGXFSZ) == 1;
}

NoSizeSignal::~NoSizeSignal() {
  if (--t_depth > 0) return;
  const int error = errno;
  const sigset_t set = SizeSignal();
  const timespec now = {};
  // One that was pending before is the host's own.
  if (!m_wasPending) sigtimedwait(&set, nullptr, &now);
  pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  errno = error;
}

}  // namespace platform
