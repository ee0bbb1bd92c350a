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
// to be read as it is; a file that is written is found by the rules of place.h. In both cases a
// FIFO or a device is refused at once, and nothing here waits.

#include <sys/file.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <optional>

#include "platform/posix/machine/place.h"

namespace platform {

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
Descriptor OpenFolder(const std::filesystem::path& path, Missing missing);

/// flock(2) with LOCK_SH or LOCK_EX. Returns false and sets errno, EBUSY when the lock has not
/// become free within `patience`.
bool Lock(const Descriptor& file, int operation, std::chrono::milliseconds patience);

/// Returns the place of a file that is to be written or replaced. Without a folder in it errno is
/// set.
Place PlaceOf(const std::filesystem::path& path);

/// The owner and the mode of the current machine's root, as the calling account sees them.
struct RootState {
  uid_t owner;
  bool isOwn;           ///< The caller is that owner.
  bool isOpenToOthers;  ///< Others can write to it.
};
/// Returns null when there is no such folder.
std::optional<RootState> ExamineRoot();

}  // namespace platform
