#pragma once

#include <cstdlib>
#include <filesystem>

#include "peers/logging/log_file.h"
#include "platform/posix/machine/machine.h"

namespace logging {

/// Where lines go at this moment, as log_file.h tells.
inline std::filesystem::path LogFile() {
  const char* const named = std::getenv("SIGIL_LOG");
  return named == nullptr || *named == '\0' ? platform::HostPath(kLogFile)
                                            : std::filesystem::path(named);
}

}  // namespace logging
