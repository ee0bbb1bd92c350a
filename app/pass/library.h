#pragma once

// The library as any host has it: loaded at run time from the host's own folder, its operations
// looked up by name; and what it tells while one of them runs.

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

/// What came of a call: the export's result and every message on the way, also those that the log
/// file leaves out or has no room for.
struct Outcome {
  int result = 0;
  std::vector<Message> messages;
  bool isWatched = true;  ///< False: the log is one that tells its messages to nobody.
};

using ExportCall = std::function<int(const Exports&)>;

/// The update export with this text.
ExportCall UpdateCall(const std::wstring& text, int policyId, bool resetName = false);

/// Loads the library, which stays loaded, and makes the call. std::runtime_error when the library,
/// an operation or its log is missing. One call at a time.
Outcome Call(const ExportCall& call);

}  // namespace app
