#pragma once

#include <set>
#include <string>

namespace app {

/// The one of the names that a misspelt name is most like; empty when none is like enough.
std::string Guess(const std::string& misspelt, const std::set<std::string>& names);

}  // namespace app
