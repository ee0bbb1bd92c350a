#pragma once

// The log file as it stands and as it grows, for people: the level of a line as a word, controls
// made visible.

#include <filesystem>
#include <string>

#include "peers/logging/log_path_posix.h"

namespace app {

using logging::LogFile;

/// What is left out. A line of another form than the library's is left out as soon as anything is.
struct LogFilter {
  int level = 0;      ///< Lines below it.
  std::string since;  ///< Lines before it: a time as it stands in the log, or empty.
};

/// The filter of a number from 0 to 5 or its word (trace, detail, progress, info, warning, error),
/// and of a time: "2025-03-31", "2025-03-31 09:12[:45]", "09:12[:45]" today, or "10m" ago (s, m, h,
/// d). Empty texts leave nothing out. UsageError for any other.
LogFilter ParseLogFilter(const std::string& level, const std::string& since);

/// Prints the file to standard output. UsageError when there is none; std::runtime_error when it
/// cannot be written.
void PrintLog(const std::filesystem::path& file, const LogFilter& filter);

/// Prints it and then whatever is appended, to the end of the process. It waits for a file that is
/// missing, and starts over with one that is replaced or cut.
[[noreturn]] void FollowLog(const std::filesystem::path& file, const LogFilter& filter);

}  // namespace app
