#pragma once

// Names that Windows compares without regard to case. Independent of the process's locale.

#include <string>
#include <string_view>

namespace platform {

bool SameName(std::wstring_view left, std::wstring_view right);
bool StartsWithName(std::wstring_view text, std::wstring_view start);
/// Returns one text for all spellings of a name, as a key of a set.
std::wstring Folded(std::wstring_view name);

}  // namespace platform
