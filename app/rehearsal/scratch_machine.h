#pragma once

// The folder of one rehearsal, with the machines in it: in memory, or below TMPDIR where that is
// set. It goes with its object.
//
// The folder is for this account alone, and nobody can put another in its place: a TMPDIR in which
// another account could is refused. A lock on the folder tells that its process lives; what a
// killed process has left is removed by the next rehearsal of the account.

#include <signal.h>

#include <filesystem>
#include <string>

#include "peers/descriptor.h"
#include "peers/settings_component/setting_file.h"

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

class ScratchMachine {
 public:
  /// Throws std::runtime_error when no folder can be had.
  ScratchMachine();
  ~ScratchMachine() { Remove(); }
  ScratchMachine(const ScratchMachine&) = delete;
  ScratchMachine& operator=(const ScratchMachine&) = delete;

  const HeldSignals& Signals() const { return m_signals; }
  /// The folder that the scratch's own lies in.
  std::filesystem::path Place() const { return m_folder.parent_path(); }

  /// A machine like the one that the desk works on: its machine.ini, the files of its client and
  /// what its setting file holds. What cannot be read is left out, except machine.ini, for which
  /// std::system_error is thrown.
  std::filesystem::path CopyMachine() const;
  /// A machine without printers, and without a key source, so that its key is zero.
  std::filesystem::path MakeBareMachine() const;

  void Remove() const;

 private:
  HeldSignals m_signals;
  peers::Descriptor m_lock;
  std::filesystem::path m_folder;
};

/// Returns the records of the machine's setting file, none when there is no file. They are read
/// from a copy, because opening the file itself leaves traces beside it. Throws std::runtime_error,
/// with the file's name, for a file that cannot be read.
peers::SettingFileContent ReadSettingsOfCopy();

}  // namespace app
