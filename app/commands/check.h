#pragma once

#include "app/commands/command.h"

namespace app {

/// Tells what a policy becomes on this machine. Gives 0 when nothing is found, 1 with findings;
/// UsageError for a text that the passes refuse, std::runtime_error where they fail over any.
int Check(const Values& values);

}  // namespace app
