#pragma once

// Text as it may stand on a terminal, in a line of a log or between other text. A control in it
// could move the cursor, forge a line or turn the order of what is read, whoever has written it; so
// every text that comes from a file, a policy or a name goes through here before anybody sees it.

#include <string>
#include <string_view>

namespace platform {

/// Controls are those of C0 and C1 with DEL, the two line separators, what embeds, overrides or
/// isolates a direction of writing (U+202A to U+202E, U+2066 to U+2069) and the byte order mark.
bool IsControl(wchar_t unit);

/// The same text in one line: a control stands as \n, \r, \t or \uXXXX. In the form for UTF-8 each
/// ill-formed part becomes U+FFFD.
std::wstring Visible(std::wstring_view text);
std::string Visible(std::string_view text);

}  // namespace platform
