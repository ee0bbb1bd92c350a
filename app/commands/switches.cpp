// The commands that are one export each: they switch the watermarks, the exclude list and the
// content log. Each gives 0 when its work is done and saved, else 1.

#include <memory>

#include "app/commands/commands.h"
#include "app/machine/settings.h"
#include "app/pass/messages.h"
#include "app/pass/pass.h"
#include "app/text/wording.h"

namespace app {
namespace {

Work Switched(const char* command, const char* done, const Outcome& outcome, bool isVerbose) {
  const WorkDone did = WorkDoneIn(outcome);
  return {
      .command = command,
      .done = done,
      .numbers = Counted(did.on, "entry", "entries") + " on, " + std::to_string(did.off) + " off.",
      .isVerbose = isVerbose};
}

int Set(bool isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.set(); });
  Work work =
      Switched("set", "The watermarks are on where the scope wants them.", outcome, isVerbose);
  if (outcome.result == SIGIL_SETTING_DONE) work.lines = WhatIsIdle();
  if (!work.lines.empty()) work.done = "The switches are on where the scope wants them.";
  return Report(outcome, work);
}

int Release(bool isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.release(); });
  return Report(
      outcome, Switched("release", "The watermarks are off and the control service knows.", outcome,
                        isVerbose));
}

int ReleaseForService(bool isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.releaseForService(); });
  return Report(outcome, Switched("release-for-service", "The watermarks are off and deleted.",
                                  outcome, isVerbose));
}

int Exclude(bool isVerbose) {
  const Outcome outcome = Call([](const Exports& exports) { return exports.updateExclude(); });
  const WorkDone did = WorkDoneIn(outcome);
  return Report(outcome, {.command = "exclude",
                          .done = "The exclude list is rebuilt.",
                          .numbers = std::to_string(did.excluded) + " of " +
                                     Counted(did.checked, "printer", "printers") + " on it.",
                          .isVerbose = isVerbose});
}

int SwitchContentLog(bool on, bool isVerbose) {
  const Outcome outcome =
      Call([on](const Exports& exports) { return exports.setUseContentLog(on); });
  return Report(outcome, {.command = "content-log",
                          .done = on ? "The content log is on." : "The content log is off.",
                          .isVerbose = isVerbose});
}

/// Adds a command that takes nothing but --verbose.
void AddSwitch(CommandLine& line, const char* name, const char* help, int (*run)(bool)) {
  const auto isVerbose = std::make_shared<bool>(false);
  AddVerbose(line.Add(name, help, [run, isVerbose] { return run(*isVerbose); }), *isVerbose);
}

}  // namespace

void AddSwitches(CommandLine& line) {
  AddSwitch(line, "set", "Switches the watermarks on, as the delivered policy's scope says", Set);
  AddSwitch(line, "release", "Switches the watermarks off", Release);
  AddSwitch(line, "release-for-service",
            "Switches off and deletes the watermarks until the next update", ReleaseForService);
  AddSwitch(line, "exclude", "Rebuilds the exclude list from the printers that exist now", Exclude);
  struct Options {
    std::string state;
    bool isVerbose = false;
  };
  const auto options = std::make_shared<Options>();
  CLI::App& command = line.Add("content-log", "Switches the print-content log callback", [options] {
    return SwitchContentLog(options->state == "on", options->isVerbose);
  });
  command.add_option("STATE", options->state, "What it becomes: on or off")
      ->type_name("")
      ->required()
      ->check(OneOf({"on", "off"}));
  AddVerbose(command, options->isVerbose);
}

}  // namespace app
