#pragma once

// The calls of the real library that a policy would meet, on a scratch machine.
//
// An update with the policy, and then, on a bare machine, set with it as the delivered policy. Both
// run in one child process, because whatever a policy does to the library must happen there.
//
// The scratch is a folder. On Linux it holds machines; it lies in memory, or below TMPDIR where
// that is set. On Windows, which has one machine, it holds copies of the program, the library and
// the stand-ins of log and component, and the component's settings; it lies below the account's own
// application data.
//
// The folder is for this account alone, and nobody can put another in its place: a TMPDIR in which
// another account could is refused. A lock on the folder shows that its process lives; the next
// rehearsal of the account removes the folders of killed processes.

#include <chrono>
#include <filesystem>
#include <memory>

#include "app/pass/pass.h"
#include "peers/settings_component/setting_file.h"

namespace app {

struct Rehearsal {
  std::string error = {};  ///< Why the child could not hold it; then there is nothing else.
  int result = 0;          ///< Of the update.
  /// Those of level kTroubleLevel and above, of the walk over the policy's list on each entry, and
  /// the first that tells of an unread text.
  std::vector<Message> messages = {};
  std::string undelivered = {};            ///< Why set refuses the policy; empty if it does not.
  std::string file = {};                   ///< The scratch's setting file.
  peers::SettingFileContent records = {};  ///< Of that file after the update.
};

/// Throws std::runtime_error when no rehearsal can be held: there is no scratch machine, the child
/// ends without an answer, its pass does not get the mutex, or the scratch machine is not saved. A
/// signal that would end this process ends the child and removes the scratch first.
Rehearsal Rehearse(const PolicyCall& call);

/// Returns the records of the machine's setting file, none when there is no file. They are read
/// from a copy, because opening the file itself leaves traces beside it; on Windows by the
/// component. Throws std::runtime_error, with the file's name, for a file that cannot be read.
peers::SettingFileContent ReadSettingsOfCopy();

/// On Windows: the command that starts a rehearsal's process, in the rehearsal's folder.
inline constexpr char kRehearse[] = "rehearse";
int RunRehearsal();

// The parts of Rehearse.

/// The scratch's folder, for the life of this.
class ScratchMachine {
 public:
  /// Throws std::runtime_error when no folder can be had.
  ScratchMachine();
  /// On Windows: the folder that the parent of this process has made and removes.
  explicit ScratchMachine(std::filesystem::path folder);
  ~ScratchMachine();
  ScratchMachine(const ScratchMachine&) = delete;
  ScratchMachine& operator=(const ScratchMachine&) = delete;

  const std::filesystem::path& Folder() const { return m_folder; }
  void Remove() const;

  /// Returns the answer of a child process to the call. Throws std::runtime_error when the child
  /// gives none.
  std::string Ask(const PolicyCall& call) const;

  // In the child:

  /// Has the passes of this process work on the scratch: on Linux on a copy of the machine, on
  /// Windows on the machine itself with the scratch's settings.
  void Enter() const;
  /// Returns why set refuses the text as the delivered policy; empty where it does not. On Linux
  /// set itself is asked, on a bare machine, which becomes this process's.
  std::string WhyUndelivered(const std::wstring& text) const;

 private:
  struct Hold;  ///< Keeps the folder this process's.

  std::unique_ptr<Hold> m_hold;
  std::filesystem::path m_folder;
};

/// Does the work of the child and returns its answer.
std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call);
/// Reads the answer, and the scratch's setting file. Throws std::runtime_error as Rehearse does.
Rehearsal TakeIn(const std::string& answer, const ScratchMachine& scratch);

/// For a person at a terminal: one line on standard error, "rehearsing: 3 s ...", which comes after
/// a second and goes with this object.
class Progress {
 public:
  Progress() = default;
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Tick();

 private:
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
  std::string m_line;  ///< As it stands there.
};

}  // namespace app
