#pragma once

#include <filesystem>
#include <string_view>

namespace app {

/// Puts a file with these bytes in its place, whole or not at all. UsageError when something that
/// is no regular file lies there; std::system_error when it cannot be written.
void WriteOutput(const std::filesystem::path& file, std::string_view bytes);

/// Puts the bytes on standard output as they are.
void PrintBytes(std::string_view bytes);

}  // namespace app
