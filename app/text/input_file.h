#pragma once

// Files that somebody else has made. Each kind has a greatest size that a real one never reaches,
// so that none can fill the memory, and none that is no regular file is waited for.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace app {

inline constexpr std::size_t kGreatestPolicy = 16 * 1024 * 1024;
/// What the passes read of any file, sealed ones included.
extern const std::size_t kGreatestSealedPolicy;
inline constexpr std::size_t kGreatestRowFile = 1024 * 1024;
inline constexpr std::size_t kGreatestKeySource = 64 * 1024;

/// Nothing when there is no such file. A std::runtime_error that names no file but tells the reason
/// when it has more than `greatest` bytes, is no regular file or cannot be read.
std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest);

/// The reason that ReadInput gives to refuse this.
void RequireSize(std::size_t size, std::size_t greatest);

}  // namespace app
