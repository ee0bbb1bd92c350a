#pragma once

// The file of the log that stands in for the closed one.

#include <cstddef>
#include <functional>

namespace app {

/// Reads the log's next bytes to a block and returns how many they are; 0 at the end.
using LogSource = std::function<std::size_t(char* block, std::size_t size)>;

/// Throws UsageError where there is no log, or something else in its place.
LogSource OpenLog();

/// Returns a source that waits at the end for more, and goes on where another file takes the log's
/// place. Throws std::system_error.
LogSource FollowLog();

}  // namespace app
