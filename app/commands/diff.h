#pragma once

#include "app/commands/command.h"

namespace app {

/// Tells in what the records differ that two policies leave on this machine. Gives 0 when they are
/// the same, 1 when not; UsageError for a policy that leaves none.
int Diff(const Values& values);

}  // namespace app
