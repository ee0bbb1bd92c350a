#pragma once

// What an export would meet on this machine, found out without changing anything: no file is made
// or written, no line logged.

#include <optional>
#include <string>
#include <vector>

#include "app/client.h"
#include "app/policy_text.h"
#include "platform/base.h"
#include "platform/posix/machine/machine.h"

namespace app {

struct Findings {
  DeliveryFolder delivery;

  std::string keySource;  ///< The state of the file that the key comes from.
  /// The state of the policy file, and the policy where it is readable.
  std::string policyFile;
  std::optional<PolicyText> policy;
  /// The scope that set goes by; nothing when there is none.
  std::optional<int> scope;

  std::optional<int> functionSwitch;  ///< Nothing when its file cannot be opened.

  std::string user;
  bool hasFullName = false;  ///< The user information file has one.

  /// Nothing when the spooler has no list.
  std::optional<std::vector<platform::Printer>> printers;

  std::string component;    ///< Empty when it is found and has its entry, else what is wrong.
  std::string settingFile;  ///< Its state, and below that where it is.
  std::string settingPath;
  bool canSave = true;  ///< The setting file is not there yet or one of the component's.
  DWORD pipeError = 0;  ///< 0 when somebody serves the pipe.
};

Findings Examine();

/// Whether the component can do with the setting file that is there, if there is one.
bool CanSave();

/// What decides on a printer: its driver, and the mark in its comment.
bool IsSuitePrinter(const platform::Printer& printer);
bool IsMonitored(const platform::Printer& printer);

/// What an export would give now, and why.
struct Forecast {
  std::string command;
  std::string result;
  std::string reason;
};
std::vector<Forecast> Foresee(const Findings& findings);

}  // namespace app
