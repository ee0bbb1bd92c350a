#pragma once

// Files as bytes and as text: those that somebody else has made, and the desk's own output. Each
// kind has a greatest size that a real one never reaches, because no file may fill the memory.
// A file that is no regular one is refused without waiting.

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

/// Names standard input or output.
inline constexpr char kStandardStream[] = "-";

/// Returns the path of a file that is named in UTF-8.
inline std::filesystem::path PathOf(std::string_view name) {
  return std::u8string(name.begin(), name.end());
}

inline constexpr char kNotRegular[] = "not a regular file";

/// Returns null when there is no such file. Throws std::runtime_error, which gives the reason and
/// names no file, when it has more than `greatest` bytes, is no regular file or cannot be read.
std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest);

/// Throws the exception of ReadInput for a size above `greatest`.
void RequireSize(std::size_t size, std::size_t greatest);

/// Returns the text of bytes in UTF-8 or UTF-16, without their byte order mark. UTF-16 without a
/// mark is known by its first character, which must be one of ASCII, as in every XML document.
/// Returns null for bytes that are ill-formed in their encoding or hold a NUL.
std::optional<std::wstring> DecodeText(std::string_view bytes);

/// Returns the bytes of a file of at most kGreatestPolicy bytes, which is not empty; "-" is
/// standard input. Throws UsageError for any other.
std::string ReadBytes(const std::string& file);

/// Returns the text of such a file. Throws UsageError for one that is no text.
std::wstring ReadTextFile(const std::string& file);

/// Returns a sentence on the first wrong byte, where DecodeText returns null.
std::string WhyNoText(std::string_view bytes);

/// Returns the name of such a file as it may be printed.
std::string NameOf(const std::string& file);

/// Puts a file with these bytes in its place, whole or not at all. Throws UsageError when something
/// that is no regular file lies there, std::runtime_error when the file cannot be written.
void WriteOutput(const std::filesystem::path& file, std::string_view bytes);
/// Writes to `file`, in UTF-8, or to standard output where that is "-". Returns whether it is a
/// file.
bool WriteOrPrint(const std::string& file, std::string_view bytes);
/// The home's part of WriteOutput.
void ReplaceOutput(const std::filesystem::path& file, std::string_view bytes);

/// Writes the bytes to a file that is missing or empty, and makes its folder. Says nothing of
/// failures.
void BeginFile(const std::filesystem::path& file, std::string_view bytes);

/// Prints the bytes on standard output as they are.
void PrintBytes(std::string_view bytes);

}  // namespace app
