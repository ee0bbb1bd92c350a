#pragma once

#include <exception>
#include <string>

namespace app {

/// What went wrong in plain words: which file, and what the system says of it.
std::string CauseOf(const std::exception& error);

}  // namespace app
