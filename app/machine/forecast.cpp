#include "app/machine/forecast.h"

#include <algorithm>

namespace app {
namespace {

Forecast Good(const char* command) {
  return {command, "0", "", true};
}

Forecast Bad(const char* command, const char* result, std::string reason) {
  return {command, result, std::move(reason), false};
}

bool HasSuitePrinter(const Findings& findings) {
  const auto isSuite = [](const PrinterFinding& each) { return each.kind == PrinterKind::kSuite; };
  return findings.printers && std::ranges::any_of(*findings.printers, isSuite);
}

/// A pass that cannot save: the switches count the printers that they failed on.
Forecast Unsaved(const Findings& findings, const char* command, bool isSwitch) {
  return Bad(command, isSwitch && HasSuitePrinter(findings) ? "-101" : "0",
             "nothing is saved: " + findings.settingFile.unsaved);
}

Forecast Pass(const Findings& findings, const char* command, bool readsPolicy, bool listsPrinters) {
  if (!findings.mutex.empty()) return Bad(command, "-101", "no mutex: " + findings.mutex);
  if (!findings.component.empty())
    return Bad(command, "-101", "the Settings component " + findings.component);
  if (readsPolicy && !findings.scope)
    return Bad(command, "-101", "the policy file: " + findings.policyFile);
  if (readsPolicy && *findings.scope == -1)
    return Bad(command, "-101", "the policy's scope is -1, which stands for none");
  if (listsPrinters && !findings.printers)
    return Bad(command, "-101", "the printers cannot be listed: " + findings.noPrinters);
  if (!findings.settingFile.unsaved.empty()) return Unsaved(findings, command, readsPolicy);
  return Good(command);
}

/// A switch that asks the system settings first.
Forecast ClientSwitch(const Findings& findings, const char* command) {
  if (!findings.functionSwitch) return Bad(command, "-201", "SystemSetting.csv cannot be opened");
  if (*findings.functionSwitch < 0) return Bad(command, "-201", "the function switch is negative");
  if (*findings.functionSwitch == 0) return Bad(command, "-200", "the function switch is off");
  return Pass(findings, command, true, true);
}

std::string NotTold(DWORD error) {
  const char* const what = error == ERROR_PIPE_BUSY ? "the pipe is busy" : "nobody serves the pipe";
  return std::string(what) + " (error " + std::to_string(error) +
         "); the settings change all the same";
}

/// Its result does not hang on the message.
Forecast Set(const Findings& findings) {
  Forecast set = ClientSwitch(findings, "set");
  if (set.isGood && findings.pipeError != 0) set.reason = NotTold(findings.pipeError);
  return set;
}

Forecast Release(const Findings& findings) {
  Forecast release = ClientSwitch(findings, "release");
  if (release.result != "0" || findings.pipeError == 0) return release;
  release.result = "-2";
  release.isGood = false;
  if (release.reason.empty()) release.reason = NotTold(findings.pipeError);
  return release;
}

Forecast Update(const Findings& findings) {
  Forecast update = Pass(findings, "update", false, true);
  if (update.result != "0" || findings.hasFullName) return update;
  // A name that is found counts only once it is stored.
  const bool isStored = findings.unstoredName.empty();
  update.result = isStored ? "0 or -99" : "-99";
  if (update.reason.empty() && !isStored)
    update.reason = "the user's full name cannot be stored: " + findings.unstoredName;
  if (update.reason.empty())
    update.reason = "-99 when the user's full name is not found; a policy comes with the call";
  return update;
}

}  // namespace

std::vector<Forecast> Foresee(const Findings& findings) {
  return {Set(findings),
          Release(findings),
          Pass(findings, "release-for-service", true, true),
          Update(findings),
          Pass(findings, "exclude", false, true),
          Pass(findings, "content-log", false, false)};
}

}  // namespace app
