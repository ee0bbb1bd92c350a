#pragma once

// The place of a file that is written, found past links that another account has planted.
//
// A link is followed only if it belongs to the process's account or to the owner of the folder that
// it lies in, or if nobody else can write to that folder. A file of another account in a folder
// with the sticky bit is neither written nor replaced. These are the rules of the kernel's
// fs.protected_symlinks and fs.protected_regular, for links in every folder and whatever the
// sysctls say.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/owner.h"

namespace platform {

/// The owner of a file descriptor. The descriptor is above 2: a host whose standard streams are
/// closed would otherwise print into the file.
class Descriptor : public Owner<int, close, -1> {
 public:
  Descriptor() = default;
  /// Moves a descriptor of 0 to 2 to another number, with close-on-exec set. If there is none left,
  /// nothing is owned and errno is set.
  explicit Descriptor(int file) : Owner(AboveStandardStreams(file)) {}

 private:
  static int AboveStandardStreams(int file);
};

/// Opens the entry `name` of a folder itself, also a link.
Descriptor OpenEntry(const Descriptor& folder, const std::string& name);

/// A folder, and a name in it that is no link.
struct Place {
  Descriptor folder;
  std::string name;
};

/// What becomes of missing folders on the way; new ones are for the account alone.
enum class Missing { kFails, kIsMade };

/// Returns the place that `path` leads to. Without a folder in it errno is set, EACCES for a link
/// that is not followed.
Place FindPlace(const std::filesystem::path& path, Missing missing);

/// Returns whether the file is another account's that must not be written in this folder.
bool IsKept(const Descriptor& folder, const struct stat& file);

}  // namespace platform
