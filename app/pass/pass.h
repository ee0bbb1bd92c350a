#pragma once

// One call of the library as any host makes it, and the report on it: the library is loaded at run
// time from the host's own folder, its operations are looked up by name, and its messages are
// gathered while one of them runs.

#include <compare>
#include <functional>
#include <string>
#include <vector>

#include "boundary/exports.h"

namespace app {

struct Exports {
  decltype(&SigilSettingReleaseWaterMark) release;
  decltype(&SigilSettingSetWaterMark) set;
  decltype(&SigilSettingUpdateWaterMarkSetting) update;
  decltype(&SigilSettingReleaseWaterMarkForService) releaseForService;
  decltype(&SigilSettingSetUseContentLog) setUseContentLog;
  decltype(&SigilSettingUpdateExcludePrinter) updateExclude;
};

/// A message that the library has logged. Texts are UTF-8.
struct Message {
  int level;
  int number;
  std::string function;
  std::string text;

  auto operator<=>(const Message&) const = default;
};

/// The result of an export, and the messages on the way, also those that the log file leaves out or
/// has no room for.
struct Outcome {
  int result = 0;
  std::vector<Message> messages;
  bool isWatched = true;  ///< False: the log is one that shows its messages to nobody.
};

using ExportCall = std::function<int(const Exports&)>;
/// Returns whether a message is kept in the outcome.
using MessageFilter = std::function<bool(const Message&)>;

/// An update with a policy, whose text must live as long.
struct PolicyCall {
  const std::wstring& text;
  int policyId = 1;
  bool resetName = false;
};
ExportCall UpdateCall(const PolicyCall& call);

/// Loads the library, which stays loaded, and makes the call. Throws std::runtime_error when the
/// library, an operation or its log is missing. Keeps every message if no filter is given. One call
/// at a time.
Outcome Call(const ExportCall& call, const MessageFilter& isKept = nullptr);

/// What a command knows about its own work.
struct Work {
  std::string command;
  std::string done;                     ///< The sentence for a result of 0.
  std::string numbers = {};             ///< The work in numbers, as a sentence.
  std::vector<std::string> lines = {};  ///< Printed below, a line each.
  std::string cause = {};               ///< Why the pass failed, where the command knows.
  /// Why the work is not in the setting file, although nothing in the outcome says so.
  std::string unsaved = {};
  std::vector<Message> told = {};  ///< Trouble that `lines` name already.
  bool isVerbose = false;          ///< The library's own messages are printed, too.
};

/// Prints the result, the work, and the trouble of the pass, each with the step against it. Returns
/// the exit status: 0 when the work is done and saved, also with a full name still to come.
int Report(const Outcome& outcome, const Work& work);

/// Returns why the component could not save in the setting file, as far as it can be seen now.
std::string WhyUnsaved();

}  // namespace app
