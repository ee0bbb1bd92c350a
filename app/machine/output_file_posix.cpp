#include <iostream>
#include <string>

#include "app/machine/output_file.h"
#include "app/text/errors.h"
#include "platform/posix/machine/whole_file.h"

namespace app {

namespace fs = std::filesystem;

void WriteOutput(const fs::path& file, std::string_view bytes) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (fs::exists(status) && !fs::is_regular_file(status))
    throw UsageError(file.string() + ": not a regular file");
  platform::ReplaceWholeFile(fs::absolute(file), bytes);
}

void PrintBytes(std::string_view bytes) {
  std::cout << bytes;
}

}  // namespace app
