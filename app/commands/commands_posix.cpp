#include "app/commands/commands.h"
#include "app/machine/policy_file.h"
#include "app/rehearsal/compare.h"
#include "app/text/errors.h"

namespace app {

const char kFooter[] =
    "Environment:\n"
    "  SIGIL_ROOT       the machine's folder; else sigil/machine in XDG_DATA_HOME,\n"
    "                   which is ~/.local/share where it is not set\n"
    "  SIGIL_LOG        the log file, in place of the machine's own\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n"
    "  TMPDIR           where policies are rehearsed, in private folders that go\n"
    "                   again; memory where it is not set\n";

std::string DeliveredForce() try {
  const Force force = ForceOf(ReviewPolicy({ReadPolicySource("").text}));
  if (force.IsIn()) return "yes";
  if (force.unknown.empty()) return "no; `sigilctl verify` names what differs";
  return Sentence(force);
} catch (const std::exception& error) {
  return "cannot be told: " + CauseOf(error);
}

void AddCommands(CommandLine& line) {
  AddInit(line);
  AddCheck(line);
  AddDiff(line);
  AddPreview(line);
  AddUpdate(line);
  AddSwitches(line);
  AddShow(line);
  AddLog(line);
  AddSeal(line);
  AddUnseal(line);
  AddServe(line);
  AddVerify(line);
  AddReport(line);
  AddDoctor(line);
}

}  // namespace app
