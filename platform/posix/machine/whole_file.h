#pragma once

// Files that are read and replaced as a whole, opened by the rules of machine_file.h.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Returns null when there is no such file. Throws std::system_error when it cannot be read, and
/// for one that is larger than kLargestFile.
std::optional<std::string> ReadWholeFile(const std::filesystem::path& path);

/// Writes all bytes to an open file or pipe. Throws std::system_error, which names `path`.
void WriteAll(int file, std::string_view bytes, const std::filesystem::path& path);

/// Writes a file, which takes the place of an old one at once, so readers need no lock. Throws
/// std::system_error, and the old file is then as it was.
void ReplaceWholeFile(const std::filesystem::path& path, std::string_view bytes);

/// Replaces a file by what `change` makes of its bytes (null: there is no file). Callers that
/// change files of one folder take turns, in all processes, by a lock on the folder; so it is for
/// folders that no other account can open. Throws std::system_error, EBUSY when the lock has not
/// become free within kLockPatience, and the file is then as it was.
void ChangeWholeFile(const std::filesystem::path& path,
                     const std::function<std::string(const std::optional<std::string>&)>& change);

}  // namespace platform
