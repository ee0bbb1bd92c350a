#pragma once

#include <cstdlib>
#include <filesystem>

#include "peers/logging/log_file.h"
#include "platform/posix/machine/machine.h"

namespace logging {

/// Returns the path of the log file at this moment (see log_file.h).
inline std::filesystem::path LogFile() {
  const char* const named = std::getenv("SIGIL_LOG");
  return named == nullptr || *named == '\0' ? platform::HostPath(kLogFile)
                                            : std::filesystem::path(named);
}

}  // namespace logging
