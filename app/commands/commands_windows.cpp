// The commands of Linux alone, and the one of Windows alone.

#include "app/commands/command_line.h"
#include "app/rehearsal/rehearse.h"

namespace app {
namespace {

constexpr char kLinux[] = "works on Linux alone";

}  // namespace

void AddInit(CommandLine& line) {
  line.AddMissing("init", "Lays out a sample machine with a sample policy", kLinux);
}

/// In place of serve, another process runs here: that of a rehearsal, which Linux forks.
void AddServe(CommandLine& line) {
  line.AddMissing("serve", "Runs the control service and prints its events", kLinux);
  line.AddWithoutMachine(kRehearse, "Does the work of a rehearsal's process", RunRehearsal)
      .group("");  // hidden
}

}  // namespace app
