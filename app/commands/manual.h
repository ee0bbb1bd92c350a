#pragma once

#include <iosfwd>
#include <vector>

#include "app/commands/command.h"

namespace app {

/// The program's page of the manual, sigilctl(1), as man(1) reads it: of the commands that are not
/// hidden, and of the texts in commands.h.
void PrintManual(std::ostream& out, const std::vector<Command>& commands);

}  // namespace app
