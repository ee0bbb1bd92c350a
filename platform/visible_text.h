#pragma once

// Text as it may stand on a terminal, in a line of a log or between other text. A control could
// move the cursor, forge a line or turn the order of reading, and a character without a glyph could
// make two names look like one. So every text that comes from a file, a policy, a path or a name
// goes through here before anybody sees it.

#include <string>
#include <string_view>

namespace platform {

/// Returns the text in one line: a control, a mark of the direction of writing and a character
/// without a glyph become \n, \r, \t or \uXXXX, one for each UTF-16 unit. In the form for UTF-8
/// each ill-formed part becomes U+FFFD.
std::wstring Visible(std::wstring_view text);
std::string Visible(std::string_view text);

}  // namespace platform
