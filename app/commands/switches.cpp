// The commands that are one export each: they switch the watermarks, the exclude list and the
// content log. Each gives 0 when its work is done and saved, else 1.

#include "app/commands/command_line.h"
#include "app/machine/settings.h"
#include "app/pass/messages.h"
#include "app/pass/pass.h"
#include "app/text/wording.h"

namespace app {
namespace {

/// "2 entries on, 1 off."
std::string Switched(const Outcome& outcome) {
  const WorkDone did = WorkDoneIn(outcome);
  return Counted(did.on, "entry", "entries") + " on, " + std::to_string(did.off) + " off.";
}

int Set(const bool& isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.set(); });
  const auto idle =
      outcome.result == SIGIL_SETTING_DONE ? WhatIsIdle() : std::vector<std::string>();
  return Report(outcome, {.command = "set",
                          .done = idle.empty() ? "The watermarks are on where the scope wants them."
                                               : "The switches are on where the scope wants them.",
                          .numbers = Switched(outcome),
                          .lines = idle,
                          .isVerbose = isVerbose});
}

int Release(const bool& isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.release(); });
  return Report(outcome, {.command = "release",
                          .done = "The watermarks are off and the control service knows.",
                          .numbers = Switched(outcome),
                          .isVerbose = isVerbose});
}

int ReleaseForService(const bool& isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.releaseForService(); });
  return Report(outcome, {.command = "release-for-service",
                          .done = "The watermarks are off and deleted.",
                          .numbers = Switched(outcome),
                          .isVerbose = isVerbose});
}

int Exclude(const bool& isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.updateExclude(); });
  const WorkDone did = WorkDoneIn(outcome);
  return Report(outcome, {.command = "exclude",
                          .done = "The exclude list is rebuilt.",
                          .numbers = std::to_string(did.excluded) + " of " +
                                     Counted(did.checked, "printer", "printers") + " on it.",
                          .isVerbose = isVerbose});
}

struct ContentLogOptions {
  std::string state;
  bool isVerbose = false;
};

int SwitchContentLog(const ContentLogOptions& options) {
  const bool isOn = options.state == "on";
  const Outcome outcome =
      Call([isOn](const Exports& exports) { return exports.setUseContentLog(isOn); });
  return Report(outcome, {.command = "content-log",
                          .done = "The content log is " + options.state + ".",
                          .isVerbose = options.isVerbose});
}

/// Adds a command that takes nothing but --verbose.
void AddSwitch(CommandLine& line, const char* name, const char* help, int (*run)(const bool&)) {
  auto [command, isVerbose] = line.Add(name, help, run);
  AddVerbose(command, isVerbose);
}

}  // namespace

void AddSwitches(CommandLine& line) {
  AddSwitch(line, "set", "Switches the watermarks on, as the delivered policy's scope says", Set);
  AddSwitch(line, "release", "Switches the watermarks off", Release);
  AddSwitch(line, "release-for-service",
            "Switches off and deletes the watermarks until the next update", ReleaseForService);
  AddSwitch(line, "exclude", "Rebuilds the exclude list from the printers that exist now", Exclude);
  auto [command, options] =
      line.Add("content-log", "Switches the print-content log callback", SwitchContentLog);
  command.add_option("STATE", options.state, "What it becomes: on or off")
      ->type_name("")
      ->required()
      ->check(OneOf({"on", "off"}));
  AddVerbose(command, options.isVerbose);
}

}  // namespace app
