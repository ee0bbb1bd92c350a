#pragma once

// The folder of one rehearsal. It goes with its object.
//
// On Linux it holds machines; it lies in memory, or below TMPDIR where that is set. On Windows,
// which has one machine, it holds copies of the program, the library and the stand-ins of log and
// component, and the component's settings; it lies below the account's own application data.
//
// The folder is for this account alone, and nobody can put another in its place: a TMPDIR in which
// another account could is refused. A lock on the folder tells that its process lives; what a
// killed process has left is removed by the next rehearsal of the account.

#include <filesystem>
#include <memory>
#include <string>

#include "peers/settings_component/setting_file.h"

namespace app {

struct PolicyCall;

class ScratchMachine {
 public:
  /// Throws std::runtime_error when no folder can be had.
  ScratchMachine();
  /// On Windows: the folder that the parent of this process has made and removes.
  explicit ScratchMachine(std::filesystem::path folder);
  ~ScratchMachine();
  ScratchMachine(const ScratchMachine&) = delete;
  ScratchMachine& operator=(const ScratchMachine&) = delete;

  /// The folder that the scratch's own lies in.
  std::filesystem::path Place() const { return m_folder.parent_path(); }

  /// Returns the answer of a child process to the call (AnswerOf in rehearse.h). Throws
  /// std::runtime_error when the child gives none.
  std::string Ask(const PolicyCall& call) const;

  // In the child:

  /// Has the passes of this process work on the scratch: on Linux on a copy of the machine, on
  /// Windows on the machine itself with the scratch's settings.
  void Enter() const;
  /// Returns why set refuses the text as the delivered policy; empty where it does not. On Linux
  /// set itself is asked, on a bare machine, which becomes this process's.
  std::string WhyUndelivered(const std::wstring& text) const;

  // On Linux:

  /// A machine like the one that the desk works on: its machine.ini, the files of its client and
  /// what its setting file holds. What cannot be read is left out, except machine.ini, for which
  /// std::system_error is thrown.
  std::filesystem::path CopyMachine() const;
  /// A machine without printers, and without a key source, so that its key is zero.
  std::filesystem::path MakeBareMachine() const;

  void Remove() const;

 private:
  struct Hold;  ///< What keeps the folder this process's.

  std::unique_ptr<Hold> m_hold;
  std::filesystem::path m_folder;
};

/// Returns the records of the machine's setting file, none when there is no file. They are read
/// from a copy, because opening the file itself leaves traces beside it; on Windows by the
/// component. Throws std::runtime_error, with the file's name, for a file that cannot be read.
peers::SettingFileContent ReadSettingsOfCopy();

}  // namespace app
