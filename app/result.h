#pragma once

// What an export's result means to the one who called for it.

#include <string>

namespace app {

/// One sentence for any result but 0.
std::string MeaningOf(int result);

/// Prints the result of `command` with a sentence, `done` for 0, and gives the exit status: 0 when
/// the work is done. It is done also with a full name still to come, which is warned of.
int Report(const std::string& command, int result, const std::string& done);

}  // namespace app
