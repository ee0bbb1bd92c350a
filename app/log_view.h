#pragma once

// The log file as it stands and as it grows.

#include <filesystem>

namespace app {

/// Where the library's lines go on this machine.
std::filesystem::path LogFile();

/// Prints the file to standard output. UsageError when there is none.
void PrintLog(const std::filesystem::path& file);

/// Prints it and then whatever is appended, to the end of the process. It waits for a file that is
/// missing, and starts over with one that is replaced or cut.
[[noreturn]] void FollowLog(const std::filesystem::path& file);

}  // namespace app
