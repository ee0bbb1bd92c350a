#pragma once

#include "app/commands/command.h"

namespace app {

/// Rehearses a policy and applies it. Gives 1 when it is not applied or not saved; UsageError for a
/// policy that is refused.
int Update(const Values& values);

}  // namespace app
