#include "app/text/errors.h"

#include <filesystem>
#include <new>

namespace app {

std::string CauseOf(const std::exception& error) {
  if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "out of memory";
  const auto* const file = dynamic_cast<const std::filesystem::filesystem_error*>(&error);
  if (file == nullptr) return error.what();
  return file->path1().string() + ": " + file->code().message();
}

}  // namespace app
