#pragma once

// Files that are read and replaced as a whole.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace platform {

/// Null when there is no such file. Throws std::system_error when it cannot be read.
std::optional<std::string> ReadWholeFile(const std::filesystem::path& path);

/// Gives the file the bytes that `change` makes of its old ones (null: there is no file; null given
/// back: leave it so). The new bytes take the place of the old at once and keep the mode, so
/// readers need no lock; those who change files of one folder take turns, in all processes. Throws
/// std::system_error, and the file is then as it was.
void ChangeWholeFile(
    const std::filesystem::path& path,
    const std::function<std::optional<std::string>(const std::optional<std::string>&)>& change);

}  // namespace platform
