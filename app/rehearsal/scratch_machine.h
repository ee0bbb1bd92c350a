#pragma once

// A machine for one rehearsal: a private folder in memory, or below TMPDIR where that is set, that
// goes again with its object.
//
// While it is there, the signals that end a process wait, so that none of them leaves it behind. A
// rehearsal itself runs in a process of its own, which they do end.

#include <signal.h>

#include <filesystem>
#include <string>

namespace app {

/// The signals SIGINT, SIGTERM and SIGHUP wait in its lifetime.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

 private:
  sigset_t m_before = {};
};

class ScratchMachine {
 public:
  ScratchMachine();
  ~ScratchMachine();
  ScratchMachine(const ScratchMachine&) = delete;
  ScratchMachine& operator=(const ScratchMachine&) = delete;

  const std::filesystem::path& Root() const { return m_root; }

  /// Gives the machine a file, by its path below the root.
  void Write(const std::filesystem::path& file, const std::string& bytes) const;

  /// Makes it like the machine that the desk works on: its machine.ini, the files of its client and
  /// what its setting file holds. What cannot be read is left out, but for machine.ini:
  /// std::system_error.
  void CopyMachine() const;

 private:
  HeldSignals m_signals;
  std::filesystem::path m_root;
};

}  // namespace app
