#pragma once

// Names that Windows compares without regard to case. Independent of the process's locale.

#include <string>
#include <string_view>

namespace platform {

bool SameName(std::wstring_view left, std::wstring_view right);
bool StartsWithName(std::wstring_view text, std::wstring_view start);
/// The same text for all that are one name, to be kept in a set.
std::wstring Folded(std::wstring_view name);

}  // namespace platform
