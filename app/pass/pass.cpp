#include "app/pass/pass.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "app/machine/home.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "peers/logging/log_watch.h"
#include "platform/utf.h"

namespace app {
namespace {

Part Load(const wchar_t* fileName) {
  Part part = LoadPart(fileName);
  if (!part.fault.empty())
    throw std::runtime_error(platform::ToUtf8(BesideHost(fileName)) + ": the library " +
                             part.fault);
  return part;
}

template <class Operation>
void LookUp(const Part& library, const char* name, Operation& operation) {
  operation = Function<Operation>(library, name);
  if (operation == nullptr) throw std::runtime_error(std::string(name) + ": not in the library");
}

Exports LoadExports() {
  static const Part library = Load(kLibrary);
  Exports exports{};
  LookUp(library, "SigilSettingReleaseWaterMark", exports.release);
  LookUp(library, "SigilSettingSetWaterMark", exports.set);
  LookUp(library, "SigilSettingUpdateWaterMarkSetting", exports.update);
  LookUp(library, "SigilSettingReleaseWaterMarkForService", exports.releaseForService);
  LookUp(library, "SigilSettingSetUseContentLog", exports.setUseContentLog);
  LookUp(library, "SigilSettingUpdateExcludePrinter", exports.updateExclude);
  return exports;
}

/// Gathers the messages of its lifetime that the filter keeps.
class Watch {
 public:
  Watch(std::vector<Message>& messages, const MessageFilter& isKept)
      : m_setWatcher(Function<SigilWatchLogFunction*>(Load(kLog), "SigilWatchLog")) {
    s_messages = &messages;
    s_isKept = &isKept;
    if (m_setWatcher != nullptr) m_setWatcher(&Take);
  }
  ~Watch() {
    if (m_setWatcher != nullptr) m_setWatcher(nullptr);
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  explicit operator bool() const { return m_setWatcher != nullptr; }

 private:
  static void Take(int level, int number, const wchar_t* function, const wchar_t* text) {
    Message message{level, number, platform::ToUtf8(function), platform::ToUtf8(text)};
    if (!*s_isKept || (*s_isKept)(message)) s_messages->push_back(std::move(message));
  }

  static inline std::vector<Message>* s_messages = nullptr;
  static inline const MessageFilter* s_isKept = nullptr;
  SigilWatchLogFunction* const m_setWatcher;
};

bool Has(const std::vector<Message>& troubles, Weight weight) {
  return std::ranges::any_of(
      troubles, [&](const Message& message) { return MeaningOf(message).weight == weight; });
}

/// True if the pass completed; a failed notification counts as completed.
bool Ran(int result) {
  return result != SIGIL_SETTING_FAILED && result != SIGIL_SETTING_FUNCTION_OFF &&
         result != SIGIL_SETTING_UNREADABLE;
}

/// The sentence of a result, except 0, of a pass that ran to its end.
std::string SentenceOf(int result) {
  constexpr const char* kReasons[] = {"no security descriptor", "its pipe could not be opened",
                                      "writing to its pipe failed", "closing its pipe failed",
                                      "there was no message"};
  if (result == SIGIL_SETTING_NO_FULL_NAME)
    return "The policy is applied, but the user's full name has not been obtained yet.";
  if (result >= 0 || result < -5) return "This result has no meaning.";
  return std::string("The watermarks are off, but the control service was not told: ") +
         kReasons[-result - 1] + ".";
}

/// The same with the troubles of the pass; `unsaved` is why its work is not in the setting file.
std::string Sentence(int result, const Work& work, const std::string& unsaved,
                     const std::vector<Message>& troubles) {
  if (!unsaved.empty()) return "Yet it is not saved: " + unsaved + ".";
  if (Has(troubles, Weight::kFailure)) return "Yet not all is done.";
  return result == SIGIL_SETTING_DONE ? work.done : SentenceOf(result);
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

ExportCall UpdateCall(const PolicyCall& call) {
  return [call](const Exports& exports) {
    return exports.update(0, call.policyId, nullptr, call.text.c_str(), call.resetName ? 1 : 0);
  };
}

Outcome Call(const ExportCall& call, const MessageFilter& isKept) {
  const Exports exports = LoadExports();
  Outcome outcome;
  const Watch watch(outcome.messages, isKept);
  outcome.isWatched = static_cast<bool>(watch);
  outcome.result = call(exports);
  return outcome;
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
  const bool hasRun = Ran(outcome.result);
  const std::string unsaved =
      work.unsaved.empty() && Has(troubles, Weight::kUnsaved) ? WhyUnsaved() : work.unsaved;
  const bool isWhole = hasRun && unsaved.empty() && !Has(troubles, Weight::kFailure);
  std::string cause = work.cause.empty() ? unsaved : work.cause;
  bool isForeseen = false;  // the machine's state explains all of the failure
  if (!hasRun && cause.empty()) {
    cause = WhyForeseen(work.command, outcome.result);
    isForeseen = !cause.empty();
    if (!isForeseen) cause = FirstFailure(outcome.messages).sentence;
  }

  const bool hasFailed = outcome.result == SIGIL_SETTING_FAILED;
  std::cout << work.command << ": " << outcome.result << ". "
            << (hasRun      ? Sentence(outcome.result, work, unsaved, troubles)
                : hasFailed ? "The pass failed: " + cause + "."
                            : "Nothing is done: " + cause + ".")
            << "\n";
  if (!outcome.isWatched)
    std::cout << "  The log tells the rest; it cannot be watched from here.\n";
  else if (isWhole && !work.numbers.empty())
    std::cout << "  " << work.numbers << "\n";
  for (const std::string& line : work.lines) std::cout << "  " << line << "\n";
  std::cout << std::flush;
  const std::set<Message> told(work.told.begin(), work.told.end());
  std::erase_if(troubles, [&](const Message& message) {
    const bool isCause = isForeseen && MeaningOf(message).weight == Weight::kFailure;
    return (isCause && !work.isVerbose) || told.contains(message);
  });
  Tell(std::move(troubles), work.isVerbose);
  TellRefusedPlaces();
  const bool isDone =
      outcome.result == SIGIL_SETTING_DONE || outcome.result == SIGIL_SETTING_NO_FULL_NAME;
  return isWhole && isDone ? 0 : 1;
}

}  // namespace app
