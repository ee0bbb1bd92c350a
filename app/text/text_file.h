#pragma once

// Text files as people and programs leave them.

#include <optional>
#include <string>
#include <string_view>

namespace app {

/// The text of bytes in UTF-8 or UTF-16, without their byte order mark. UTF-16 without a mark is
/// known by its first character, which must be one of ASCII, as in every XML document. Nothing for
/// what is ill-formed in its encoding or holds a NUL.
std::optional<std::wstring> DecodeText(std::string_view bytes);

/// The text of a file of at most kGreatestPolicy bytes, which is not empty; "-" is standard input.
/// UsageError for any other.
std::wstring ReadTextFile(const std::string& file);

/// How such a file is named to people.
std::string NameOf(const std::string& file);

}  // namespace app
