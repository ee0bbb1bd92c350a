#pragma once

// What an export's outcome means to the one who called for it.

#include <string>
#include <vector>

#include "app/pass/library.h"

namespace app {

/// One sentence for the results of a pass that ran to its end, but 0.
std::string MeaningOf(int result);

/// What a command knows about its own work.
struct Work {
  std::string command;
  std::string done;                     ///< The sentence for a result of 0.
  std::string numbers = {};             ///< A sentence that tells what was done, in numbers.
  std::vector<std::string> lines = {};  ///< What else is to be told, a line each.
  std::string cause = {};               ///< Why the pass failed, where the command knows.
  /// Why the work is not in the setting file, although nothing in the outcome says so.
  std::string unsaved = {};
  std::vector<Message> told = {};  ///< Trouble that `lines` tell already.
  bool isVerbose = false;          ///< The library's own messages are printed, too.
};

/// Prints the result, what was done, and the trouble that the library told of, each with what to do
/// about it. Gives the exit status: 0 when the work is done and saved. It is done also with a full
/// name still to come.
int Report(const Outcome& outcome, const Work& work);

/// Why the component could not save in the setting file, as far as it can be seen now.
std::string WhyUnsaved();

}  // namespace app
