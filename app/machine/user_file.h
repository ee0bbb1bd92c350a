#pragma once

// The user information file, in which the library keeps the user's full name. The call that makes
// it writes it in the ANSI code page, where a letter outside of that page becomes another one or
// '?', unless the file is there and begins with the mark of UTF-16. A host lays such a file before
// its first update.

#include <optional>
#include <string>

namespace app {

/// Returns the component's folder for settings, null when the component gives none.
std::optional<std::wstring> SettingFolder();

/// Lays a file of the mark alone, and its folder, where `file` is missing or empty. Says nothing of
/// failures, because the pass meets them too.
void LayUserFile(const std::wstring& file);

/// The same for this machine and user.
void LayUserFile();

struct UserFile {
  std::wstring path;  ///< Empty when the folder is unknown.
  std::string state;  ///< For people.
  bool hasFullName = false;
  std::string fullName;
};

UserFile ExamineUserFile();

}  // namespace app
