#pragma once

// The one place that opens what lies in a machine.
//
// A machine belongs to the account that owns its root and serves no other, root included: what one
// account has prepared in its own folder must never guide the hand of another. So below the root
// nothing is opened but what that account owns and no link is followed, not even in the middle of
// a path. What is made is for the account alone, whatever the umask is, and a folder that others
// could reach is closed to them when it is met. The root itself may lie behind links, and must not
// be writable to others.
//
// A path of Linux that leads elsewhere, which only the account itself can have named, is opened as
// it is. In both places a FIFO or a device is refused at once, and nothing here waits.

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/owner.h"

namespace platform {

/// The owner of a file descriptor.
using Descriptor = Owner<int, close, -1>;

/// No file that is read as a whole is larger: a policy of 16 MiB, and what sealing adds to it. A
/// real one has a thousandth of that.
constexpr std::size_t kLargestFile = 17 << 20;

/// How long a lock on a file is waited for that its holders need for a moment only.
constexpr std::chrono::seconds kLockPatience(5);

/// Whether `path` is written as one below the root.
bool IsInMachine(const std::filesystem::path& path);

/// Opens what lies at `path`, with the flags of open(2); O_CREAT makes the folders on the way too.
/// `type` is what it has to be, as S_IFREG, or 0: anything, also a link, which O_PATH can open.
/// Without success errno: EACCES for what has another owner or type, for a link and in another
/// account's machine.
Descriptor Open(const std::filesystem::path& path, int flags, mode_t type = S_IFREG);

/// The same for a folder, to work in or to lock.
enum class Missing { kFails, kIsMade };
Descriptor OpenFolder(const std::filesystem::path& path, Missing missing);

/// flock(2) with LOCK_SH or LOCK_EX. False and errno, EBUSY when the lock has not become free
/// within `patience`.
bool Lock(const Descriptor& file, int operation, std::chrono::milliseconds patience);

/// A new file that is to take the place of `target`, beside which it lies until it is renamed or
/// linked. The folder must have been opened, as that checks it. Elsewhere than in the machine it
/// has the mode of the file that is there, or that of a new one. Throws std::system_error.
class Draft {
 public:
  explicit Draft(const std::filesystem::path& target);
  /// Removes what still has the draft's own name.
  ~Draft() { unlink(m_name.c_str()); }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  const std::string& Name() const { return m_name; }
  Descriptor& File() { return m_file; }

 private:
  std::string m_name;
  Descriptor m_file;
};

/// How the current machine's root stands to the calling account.
struct RootState {
  uid_t owner;
  bool isOwn;           ///< The caller is that owner.
  bool isOpenToOthers;  ///< Others can write to it.
};
/// Null when there is no such folder.
std::optional<RootState> ExamineRoot();

}  // namespace platform
