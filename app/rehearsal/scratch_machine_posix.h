#pragma once

#include <signal.h>

#include "app/rehearsal/scratch_machine.h"
#include "peers/descriptor.h"

namespace app {

/// SIGHUP, SIGINT, SIGQUIT and SIGTERM wait in its lifetime, and take effect at its end.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  /// Becomes readable, for poll(2), as soon as one of them waits.
  int File() const { return m_file.Get(); }
  /// Has the calling process, a child, take them as before.
  void Release() const;

 private:
  sigset_t m_before = {};
  peers::Descriptor m_file;
};

struct ScratchMachine::Hold {
  HeldSignals signals;
  peers::Descriptor lock;
};

}  // namespace app
