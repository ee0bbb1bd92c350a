#include "app/commands/commands.h"

namespace app {

const char kFooter[] =
    "Exit status:\n"
    "  0  the work is done; check: nothing found; diff: no difference;\n"
    "     verify: in force\n"
    "  1  an export or the machine failed, or nothing was saved;\n"
    "     check: findings; diff: differences; verify: not in force\n"
    "  2  a wrong argument or a file that will not do; nothing has been changed\n"
    "\n"
    "Environment:\n"
    "  SIGIL_ROOT       the machine's folder; else sigil/machine in XDG_DATA_HOME,\n"
    "                   which is ~/.local/share where it is not set\n"
    "  SIGIL_LOG        the log file, in place of the machine's own\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n"
    "  TMPDIR           where policies are rehearsed, in private folders that go\n"
    "                   again; memory where it is not set\n";

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
