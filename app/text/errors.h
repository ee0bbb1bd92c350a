#pragma once

// Errors as the program ends with them.

#include <exception>
#include <stdexcept>
#include <string>

namespace app {

/// What the caller has to mend: a wrong argument or a file that will not do. It is told in one
/// line, the exit status is 2, and nothing has been changed.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What went wrong in plain words: which file, and what the system says of it.
std::string CauseOf(const std::exception& error);

}  // namespace app
