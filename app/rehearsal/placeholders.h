#pragma once

// The texts in braces of a policy, and what stands in their place in a record.

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace app {

/// Returns how many times the text has {WinUser}, which an update fills in.
std::size_t CountUsers(const std::string& text);

/// Returns the texts in braces that stand in the record as in the policy, and no more than some.
std::set<std::string> Unfilled(const std::string& written, const std::string& stored);

/// Returns the user's name where `stored` is `written` with one name in place of each {WinUser}.
std::optional<std::string> UserIn(const std::string& written, const std::string& stored);

/// Returns the full names that the machine's accounts have for its user. Throws std::system_error
/// when machine.ini cannot be read.
std::vector<std::string> FullNames();

/// Returns the one of the names that became `stored` on its way through the machine's code page;
/// empty where none lost a letter.
std::string NameBefore(const std::string& stored, const std::vector<std::string>& names);

}  // namespace app
