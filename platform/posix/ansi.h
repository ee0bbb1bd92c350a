#pragma once

// The ANSI code page of the machine, 932, for the platform's own use: MultiByteToWideChar without
// its faults.

#include <string>
#include <string_view>

namespace platform {

/// Ill-formed bytes become U+30FB.
std::wstring FromAnsi(std::string_view bytes);

/// A character that the code page lacks becomes '?'.
std::string ToAnsi(std::wstring_view text);

}  // namespace platform
