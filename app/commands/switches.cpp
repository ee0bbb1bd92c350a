// The commands that are one export each: they switch the watermarks, the exclude list and the
// content log. Each gives 0 when its work is done and saved, else 1.

#include <memory>

#include "app/commands/commands.h"
#include "app/machine/file_state.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/pass/result.h"
#include "app/text/wording.h"

namespace app {
namespace {

Work Switched(const char* command, const char* done, const Outcome& outcome) {
  const WorkDone did = WorkDoneIn(outcome);
  Work work{
      .command = command,
      .done = done,
      .numbers = Counted(did.on, "entry", "entries") + " on, " + std::to_string(did.off) + " off."};
  if (did.hasFailedDelivery) work.cause = "the policy file: " + Examine().policyFile;
  return work;
}

int Switch(const char* command, const char* done, const ExportCall& call) {
  const Outcome outcome = Call(call);
  return Report(outcome, Switched(command, done, outcome));
}

int Set() {
  const Outcome outcome = Call([](const Exports& exports) { return exports.set(); });
  Work work = Switched("set", "The watermarks are on where the scope wants them.", outcome);
  if (outcome.result == SIGIL_SETTING_DONE) work.lines = WhatIsIdle();
  return Report(outcome, work);
}

int Release() {
  return Switch("release", "The watermarks are off and the control service knows.",
                [](const Exports& exports) { return exports.release(); });
}

int ReleaseForService() {
  return Switch("release-for-service", "The watermarks are off and deleted.",
                [](const Exports& exports) { return exports.releaseForService(); });
}

int Exclude() {
  const Outcome outcome = Call([](const Exports& exports) { return exports.updateExclude(); });
  const WorkDone did = WorkDoneIn(outcome);
  return Report(outcome, {.command = "exclude",
                          .done = "The exclude list is rebuilt.",
                          .numbers = std::to_string(did.excluded) + " of " +
                                     Counted(did.checked, "printer", "printers") + " on it."});
}

int SwitchContentLog(bool on) {
  const Outcome outcome =
      Call([on](const Exports& exports) { return exports.setUseContentLog(on); });
  return Report(outcome, {.command = "content-log",
                          .done = on ? "The content log is on." : "The content log is off."});
}

}  // namespace

void AddSwitches(CommandLine& line) {
  line.Add("set", "Switches the watermarks on, as the delivered policy's scope says", Set);
  line.Add("release", "Switches the watermarks off", Release);
  line.Add("release-for-service", "Switches off and deletes the watermarks until the next update",
           ReleaseForService);
  line.Add("exclude", "Rebuilds the exclude list from the printers that exist now", Exclude);
  const auto state = std::make_shared<std::string>();
  line.Add("content-log", "Switches the print-content log callback",
           [state] { return SwitchContentLog(*state == "on"); })
      .add_option("STATE", *state, "What it becomes: on or off")
      ->type_name("")
      ->required()
      ->check(OneOf({"on", "off"}));
}

}  // namespace app
