#pragma once

#include <iosfwd>
#include <vector>

#include "app/commands/command.h"

namespace app {

/// A script for bash that completes the program's command line: commands that are not hidden, their
/// options, words that an argument may be, and files where one is meant. It asks no machine.
void PrintCompletion(std::ostream& out, const std::vector<Command>& commands);

}  // namespace app
