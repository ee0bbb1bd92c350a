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
std::string Switched(const WorkDone& did) {
  return Counted(did.on, "entry", "entries") + " on, " + std::to_string(did.off) + " off.";
}

std::string Excluded(const WorkDone& did) {
  return std::to_string(did.excluded) + " of " + Counted(did.checked, "printer", "printers") +
         " on it.";
}

/// A command that takes nothing but --verbose.
struct Switch {
  const char* name;
  const char* help;
  int (*call)(const Exports&);
  const char* done;
  std::string (*numbers)(const WorkDone&);
};
constexpr Switch kSwitches[] = {
    {"set", "Switches the watermarks on, as the delivered policy's scope says",
     [](const Exports& exports) { return exports.set(); },
     "The watermarks are on where the scope wants them.", Switched},
    {"release", "Switches the watermarks off",
     [](const Exports& exports) { return exports.release(); },
     "The watermarks are off and the control service knows.", Switched},
    {"release-for-service", "Switches off and deletes the watermarks until the next update",
     [](const Exports& exports) { return exports.releaseForService(); },
     "The watermarks are off and deleted.", Switched},
    {"exclude", "Rebuilds the exclude list from the printers that exist now",
     [](const Exports& exports) { return exports.updateExclude(); }, "The exclude list is rebuilt.",
     Excluded}};

int Run(const Switch& given, bool isVerbose) {
  const Outcome outcome = Call(given.call);
  Work work{.command = given.name,
            .done = given.done,
            .numbers = given.numbers(WorkDoneIn(outcome)),
            .isVerbose = isVerbose};
  if (work.command == "set" && outcome.result == SIGIL_SETTING_DONE) work.lines = WhatIsIdle();
  if (!work.lines.empty()) work.done = "The switches are on where the scope wants them.";
  return Report(outcome, work);
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

}  // namespace

void AddSwitches(CommandLine& line) {
  for (const Switch& each : kSwitches) {
    const auto isVerbose = std::make_shared<bool>(false);
    const auto run = [&each, isVerbose] { return Run(each, *isVerbose); };
    AddVerbose(line.Add(each.name, each.help, run), *isVerbose);
  }
  auto [command, options] =
      line.Add("content-log", "Switches the print-content log callback", SwitchContentLog);
  command.add_option("STATE", options.state, "What it becomes: on or off")
      ->type_name("")
      ->required()
      ->check(OneOf({"on", "off"}));
  AddVerbose(command, options.isVerbose);
}

}  // namespace app
