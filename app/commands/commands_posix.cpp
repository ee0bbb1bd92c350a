#include <memory>

#include "app/commands/check.h"
#include "app/commands/commands.h"
#include "app/commands/diff.h"

namespace app {

const char kFooter[] =
    "Exit status:\n"
    "  0  the work is done; check: nothing found; diff: no difference\n"
    "  1  an export or the machine failed, or nothing was saved;\n"
    "     check: findings; diff: differences\n"
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
  AddDoctor(line);
}

void AddCheck(CommandLine& line) {
  const auto options = std::make_shared<CheckOptions>();
  CLI::App& command =
      line.Add("check", "Tells what becomes of a policy on this machine; changes nothing",
               [options] { return Check(*options); });
  AddPolicyFile(command, options->file);
  AddPolicyId(command, options->policyId);
  AddJson(command, options->isJson);
}

void AddDiff(CommandLine& line) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App& command =
      line.Add("diff", "Tells in what two policies differ, as stored; changes nothing",
               [options] { return Diff(*options); });
  command.add_option("A", options->first, "A policy, as for check")->type_name("")->required();
  command.add_option("B", options->second, "Another")->type_name("")->required();
  AddPolicyId(command, options->policyId);
}

}  // namespace app
