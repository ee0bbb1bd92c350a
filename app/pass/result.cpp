#include "app/pass/result.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "app/machine/file_state.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "boundary/exports.h"

namespace app {
namespace {

constexpr char kUnwatched[] = "The log tells the rest; it cannot be watched from here.";

std::string NotTold(const char* reason) {
  return std::string("The watermarks are off, but the control service was not told: ") + reason;
}

bool Has(const std::vector<Message>& troubles, Weight weight) {
  return std::ranges::any_of(
      troubles, [&](const Message& message) { return MeaningOf(message).weight == weight; });
}

/// True if the pass completed; a failed notification counts as completed.
bool Ran(int result) {
  return result != SIGIL_SETTING_FAILED && result != SIGIL_SETTING_FUNCTION_OFF &&
         result != SIGIL_SETTING_UNREADABLE;
}

/// Why a pass did not run to its end, and a step against that.
struct Cause {
  std::string sentence;
  std::string next = {};
  bool isForeseen = false;  ///< The machine's state explains all of the failure.
};

Cause CauseOf(const Outcome& outcome, const Work& work, const std::string& unsaved) {
  if (!work.cause.empty()) return {work.cause};
  if (!unsaved.empty()) return {unsaved};
  if (const std::string why = WhyForeseen(work.command, outcome.result); !why.empty())
    return {why, "", true};
  const Meaning first = FirstFailure(outcome.messages);
  return {first.sentence, first.next};
}

/// The sentence of a pass that ran to its end; `unsaved` is why its work is not in the setting
/// file.
std::string Sentence(int result, const Work& work, const std::string& unsaved,
                     const std::vector<Message>& troubles) {
  if (!unsaved.empty()) return "Yet it is not saved: " + unsaved + ".";
  if (Has(troubles, Weight::kFailure)) return "Yet not all is done.";
  return result == SIGIL_SETTING_DONE ? work.done : MeaningOf(result);
}

/// Prints the messages of one number together, with the step against them once.
void Tell(std::vector<Message> troubles, bool isVerbose) {
  constexpr std::size_t kMostLines = 5;
  std::set<std::string> steps = {""};
  while (!troubles.empty()) {
    const int number = troubles.front().number;
    const Meaning meaning = MeaningOf(troubles.front());
    std::cerr << "sigilctl: " << (meaning.weight == Weight::kWarning ? "warning: " : "")
              << OneLine(meaning.sentence) << ".\n";
    if (steps.insert(meaning.next).second) std::cerr << "  " << meaning.next << "\n";
    std::size_t lines = 0;
    for (const Message& message : troubles)
      if (isVerbose && message.number == number && ++lines <= kMostLines)
        std::cerr << "  log: " << message.level << " " << message.number << " "
                  << OneLine(message.text) << "\n";
    if (lines > kMostLines) std::cerr << "  and " << lines - kMostLines << " more\n";
    std::erase_if(troubles, [&](const Message& message) { return message.number == number; });
  }
}

/// The library reads what it may not open as missing, and says no more.
void TellRefusedPlaces() {
  for (const RefusedPlace& place : RefusedPlaces())
    std::cerr << "sigilctl: warning: " << OneLine(place.path.string()) << " " << place.why
              << ", so it is not opened.\n  Take it away.\n";
  if (const std::string lost = WhyLogLost(); !lost.empty())
    std::cerr << "sigilctl: warning: lines of the log got lost: " << OneLine(lost) << ".\n";
}

}  // namespace

std::string MeaningOf(int result) {
  switch (result) {
    case SIGIL_SETTING_NO_FULL_NAME:
      return "The policy is applied, but the user's full name has not been obtained yet.";
    case -1:
      return NotTold("no security descriptor.");
    case -2:
      return NotTold("its pipe could not be opened.");
    case -3:
      return NotTold("writing to its pipe failed.");
    case -4:
      return NotTold("closing its pipe failed.");
    case -5:
      return NotTold("there was no message.");
    default:
      return "This result has no meaning.";
  }
}

std::string WhyUnsaved() try {
  const SettingState file = ExamineSettingFile();
  if (!file.unsaved.empty()) return file.unsaved;
  return (file.place.empty() ? "the component's file" : file.place) + " could not be written";
} catch (const std::exception& error) {
  return "the setting file's place is unknown: " + CauseOf(error);
}

int Report(const Outcome& outcome, const Work& work) {
  std::vector<Message> troubles = Troubles(outcome.messages);
  const bool isUnsaved = !work.unsaved.empty() || Has(troubles, Weight::kUnsaved);
  const std::string unsaved = !isUnsaved ? "" : work.unsaved.empty() ? WhyUnsaved() : work.unsaved;
  const bool hasRun = Ran(outcome.result);
  const bool isWhole = hasRun && !isUnsaved && !Has(troubles, Weight::kFailure);
  const Cause cause = hasRun ? Cause{} : CauseOf(outcome, work, unsaved);

  std::cout << work.command << ": " << outcome.result << ". ";
  if (hasRun)
    std::cout << Sentence(outcome.result, work, unsaved, troubles) << "\n";
  else
    std::cout << (outcome.result == SIGIL_SETTING_FAILED ? "The pass failed: "
                                                         : "Nothing is done: ")
              << cause.sentence << ".\n";
  if (!outcome.isWatched)
    std::cout << "  " << kUnwatched << "\n";
  else if (isWhole && !work.numbers.empty())
    std::cout << "  " << work.numbers << "\n";
  for (const std::string& line : work.lines) std::cout << "  " << line << "\n";
  std::cout << std::flush;
  const std::set<Message> told(work.told.begin(), work.told.end());
  std::erase_if(troubles, [&](const Message& message) {
    const bool isCause = cause.isForeseen && MeaningOf(message).weight == Weight::kFailure;
    return (isCause && !work.isVerbose) || told.contains(message);
  });
  Tell(std::move(troubles), work.isVerbose);
  TellRefusedPlaces();
  const bool isToldToAll =
      outcome.result == SIGIL_SETTING_DONE || outcome.result == SIGIL_SETTING_NO_FULL_NAME;
  return isWhole && isToldToAll ? 0 : 1;
}

}  // namespace app
