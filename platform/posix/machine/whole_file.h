#pragma once

// Files that are read and replaced as a whole, opened as machine_file.h tells.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace platform {

/// Null when there is no such file. Throws std::system_error when it cannot be read, and for one
/// that is larger than kLargestFile.
std::optional<std::string> ReadWholeFile(const std::filesystem::path& path);

/// Gives the file the bytes that `change` makes of its old ones (null: there is no file). They take
/// the place of the old at once, so readers need no lock; those who change files of one folder take
/// turns, in all processes. Throws std::system_error, EBUSY when its turn has not come within
/// kLockPatience, and the file is then as it was.
void ChangeWholeFile(const std::filesystem::path& path,
                     const std::function<std::string(const std::optional<std::string>&)>& change);

}  // namespace platform
