#include "app/commands/commands.h"
#include "app/rehearsal/rehearse.h"

namespace app {

namespace {

constexpr char kLinux[] = "works on Linux alone";

}  // namespace

const char kFooter[] =
    "Policies are rehearsed (check, diff, preview, report, seal, update, verify):\n"
    "applied by the library itself, in a private folder below the account's\n"
    "application data that goes again, with components of its own. A rehearsal\n"
    "reads the machine's printers and names, and takes its mutex as any pass does.\n"
    "\n"
    "Environment:\n"
    "  SIGIL_LOG        the file of the log that comes with this program\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n";

/// The doctor must not wait for the mutex, as a rehearsal does.
std::string DeliveredForce() {
  return "";
}

void AddCommands(CommandLine& line) {
  AddCheck(line);
  AddDiff(line);
  AddPreview(line);
  AddUpdate(line);
  AddSwitches(line);
  AddShow(line);
  AddLog(line);
  AddSeal(line);
  AddUnseal(line);
  AddVerify(line);
  AddReport(line);
  AddDoctor(line);
  line.AddMissing("init", "Lays out a sample machine with a sample policy", kLinux);
  line.AddMissing("serve", "Runs the control service and prints its events", kLinux);
  line.AddWithoutMachine(kRehearse, "Does the work of a rehearsal's process", RunRehearsal)
      .group("");  // hidden
}

}  // namespace app
