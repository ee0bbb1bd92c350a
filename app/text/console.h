#pragma once

// What a table asks of the home that it is printed in.

#include <cstddef>

namespace app {

/// The places that a character takes on a terminal: 0, 1 or 2.
std::size_t CharacterWidth(char32_t character);

/// The places in a line of the terminal that standard output goes to; 0 where it goes elsewhere.
std::size_t ConsoleColumns();

/// Returns whether standard output goes to a terminal.
bool IsTerminal();

}  // namespace app
