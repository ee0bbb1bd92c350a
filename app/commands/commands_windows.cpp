#include "app/commands/commands.h"

namespace app {

namespace {

constexpr char kStandIn[] = "needs the stand-in component, which is on Linux alone";
constexpr char kLinux[] = "works on Linux alone";

}  // namespace

const char kFooter[] =
    "Exit status:\n"
    "  0  the work is done\n"
    "  1  an export or the machine failed, or nothing was saved\n"
    "  2  a wrong argument or a file that will not do; nothing has been changed\n"
    "\n"
    "No policy is rehearsed on Windows: update refuses what is no policy or would\n"
    "empty every entry, and applies the rest; with --force that too.\n";

std::string DeliveredForce() {
  return "";
}

void AddCommands(CommandLine& line) {
  AddUpdate(line);
  AddSwitches(line);
  AddLog(line);
  AddSeal(line);
  AddUnseal(line);
  AddDoctor(line);
  line.AddMissing("init", "Lays out a sample machine with a sample policy", kLinux);
  line.AddMissing("check", "Tells what becomes of a policy on this machine", kStandIn);
  line.AddMissing("diff", "Tells in what two policies differ, as stored", kStandIn);
  line.AddMissing("preview", "Draws the page with its watermarks as a picture", kStandIn);
  line.AddMissing("show", "Shows what the setting file holds", kStandIn);
  line.AddMissing("verify", "Tells whether a policy is what the entries hold", kStandIn);
  line.AddMissing("report", "Makes a page to look at and to sign, for a browser", kStandIn);
  line.AddMissing("serve", "Runs the control service and prints its events", kLinux);
}

}  // namespace app
