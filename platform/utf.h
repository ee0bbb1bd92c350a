#pragma once

// Wide text (one UTF-16 code unit in each `wchar_t`, in both homes) to bytes and back. Surrogates
// are known here and nowhere else. Nothing fails: an ill-formed part becomes U+FFFD.

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// Takes the first code point off `text`, which is not empty. A surrogate without its other half
/// comes out as it stands, and so does a single unit above 0xFFFF.
char32_t TakeCodePoint(std::wstring_view& text);

/// Returns the UTF-8 of UTF-16 text. A surrogate without its other half becomes U+FFFD; a single
/// unit above 0xFFFF (a literal of a compiler with 32-bit `wchar_t`) is taken as that code point.
std::string ToUtf8(std::wstring_view text);

/// Returns the UTF-16 of UTF-8 text: one U+FFFD for each maximal ill-formed part, as the Unicode
/// Standard recommends.
std::wstring FromUtf8(std::string_view text);

/// Writes the same to `target`, at most `capacity` units; `target` may be null when that is 0.
/// Returns the number of units of the whole text, without a terminator.
std::size_t DecodeUtf8(std::string_view text, wchar_t* target, std::size_t capacity);

/// Little-endian UTF-16 bytes, units as they stand, lone surrogates included.
std::string ToUtf16LeBytes(std::wstring_view text);

/// A last byte without its other half becomes U+FFFD.
std::wstring FromUtf16LeBytes(std::string_view bytes);

}  // namespace platform
