#pragma once

// Files that somebody else has made, as bytes and as text. Each kind has a greatest size that a
// real one never reaches, because no file may fill the memory; and none that is no regular file is
// waited for.

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace app {

inline constexpr std::size_t kGreatestPolicy = 16 * 1024 * 1024;
/// What the passes read of any file, sealed ones included.
extern const std::size_t kGreatestSealedPolicy;
inline constexpr std::size_t kGreatestRowFile = 1024 * 1024;
inline constexpr std::size_t kGreatestKeySource = 64 * 1024;

/// Returns the path of a file that is named in UTF-8.
inline std::filesystem::path PathOf(std::string_view name) {
  return std::u8string(name.begin(), name.end());
}

/// Nothing when there is no such file. A std::runtime_error that names no file but tells the reason
/// when it has more than `greatest` bytes, is no regular file or cannot be read.
std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest);

/// The reason that ReadInput gives to refuse this.
void RequireSize(std::size_t size, std::size_t greatest);

/// The text of bytes in UTF-8 or UTF-16, without their byte order mark. UTF-16 without a mark is
/// known by its first character, which must be one of ASCII, as in every XML document. Nothing for
/// what is ill-formed in its encoding or holds a NUL.
std::optional<std::wstring> DecodeText(std::string_view bytes);

/// Returns the bytes of a file of at most kGreatestPolicy bytes, which is not empty; "-" is
/// standard input. Throws UsageError for any other.
std::string ReadBytes(const std::string& file);

/// Returns the text of such a file. Throws UsageError for one that is no text.
std::wstring ReadTextFile(const std::string& file);

/// Names the first byte that is wrong, where DecodeText gives nothing.
std::string WhyNoText(std::string_view bytes);

/// Returns the name of such a file as it may be printed.
std::string NameOf(const std::string& file);

}  // namespace app
