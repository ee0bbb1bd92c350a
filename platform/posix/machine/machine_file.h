#pragma once

// The one place that opens files of a machine.
//
// A machine belongs to the account that owns its root and serves no other, root included: a folder
// that one account has prepared must never guide the hand of another. So below the root only files
// and folders of that account are opened, and no link is followed, not even in the middle of a
// path. New files and folders are for the account alone, whatever the umask is, and a folder that
// others could reach is closed to them when it is met. The root itself may lie behind links, and
// must not be writable to others.
//
// A path of Linux that leads elsewhere can only have been named by the account itself. It is opened
// to be read as it is. On the way to a file that is written, a link is followed only if it belongs
// to the account or to the owner of the folder it lies in, or if nobody else can write to that
// folder: this is the rule of the kernel's fs.protected_symlinks, for every folder and whatever the
// sysctl says. In both places a FIFO or a device is refused at once, and nothing here waits.

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <optional>
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

/// The greatest size of a file that is read as a whole: a policy of 16 MiB, and the bytes that
/// sealing adds to it. A real one has a thousandth of that.
constexpr std::size_t kLargestFile = 17 << 20;

/// Timeout for locks that are held only while a file is replaced.
constexpr std::chrono::seconds kLockPatience(5);

/// Returns whether `path` is written as one below the root.
bool IsInMachine(const std::filesystem::path& path);

/// Opens the file at `path`, with the flags of open(2); O_CREAT makes missing folders too. `type`
/// is the type that the file must have, as S_IFREG, or 0 for any, also a link, which O_PATH can
/// open. On failure errno is set: EACCES for another owner, another type, a link and another
/// account's machine.
Descriptor Open(const std::filesystem::path& path, int flags, mode_t type = S_IFREG);

/// Opens a folder, to work in or to lock.
enum class Missing { kFails, kIsMade };
Descriptor OpenFolder(const std::filesystem::path& path, Missing missing);

/// flock(2) with LOCK_SH or LOCK_EX. Returns false and sets errno, EBUSY when the lock has not
/// become free within `patience`.
bool Lock(const Descriptor& file, int operation, std::chrono::milliseconds patience);

/// A folder, and the name of a file in it.
struct Place {
  Descriptor folder;
  std::string name;
};

/// A new file that is to take the place of `target`. Until then it lies in the same folder under a
/// name of its own, which the destructor removes.
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

/// The owner and the mode of the current machine's root, as the calling account sees them.
struct RootState {
  uid_t owner;
  bool isOwn;           ///< The caller is that owner.
  bool isOpenToOthers;  ///< Others can write to it.
};
/// Returns null when there is no such folder.
std::optional<RootState> ExamineRoot();

}  // namespace platform
