#pragma once

// A new file that takes the place of another one at once.

#include <filesystem>
#include <string>

#include "platform/posix/machine/place.h"

namespace platform {

/// Until it takes the place of `target`, the file lies in the same folder under a name of its own,
/// which the destructor removes.
class Draft {
 public:
  /// In the machine the file is for the account alone. Elsewhere it has the mode of the account's
  /// file at `target`, or that of a new file by the umask. Throws std::system_error, EACCES also
  /// for another account's file in a folder with the sticky bit.
  explicit Draft(const std::filesystem::path& target);
  ~Draft() { unlinkat(m_place.folder.Get(), m_name.c_str(), 0); }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  Descriptor& File() { return m_file; }
  /// Returns the draft's path, for a target in the machine.
  std::filesystem::path Path() const { return m_target.parent_path() / m_name; }

  /// Replaces the target. Throws std::system_error.
  void Replace();
  /// Becomes the target. Returns false if there is a file already. Throws std::system_error.
  bool Link();

 private:
  std::filesystem::path m_target;
  Place m_place;
  std::string m_name;
  Descriptor m_file;
};

}  // namespace platform
