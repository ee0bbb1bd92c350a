#pragma once

// Errors as the program ends with them.

#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>

namespace app {

/// What the caller has to mend: a wrong argument or a file that will not do. It is told in one
/// line, the exit status is 2, and nothing has been changed.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Returns the error in plain words: which file, and what the system says of it.
inline std::string CauseOf(const std::exception& error) {
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "out of memory";
  const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&error);
  if (file == nullptr) return error.what();
  return file->path1().string() + ": " + file->code().message();
}

}  // namespace app
