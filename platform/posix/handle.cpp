#include "platform/posix/handle.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <map>
#include <mutex>
#include <utility>

#include "platform/posix/machine/machine_file.h"

namespace platform {

namespace {

struct Table {
  std::mutex guard;
  std::map<HANDLE, std::shared_ptr<Object>> objects;
  std::uintptr_t last = 0;
};

Table& Objects() {
  static Table table;
  return table;
}

}  // namespace

HANDLE AddObject(std::shared_ptr<Object> object) {
  const std::lock_guard lock(Objects().guard);
  const auto handle = reinterpret_cast<HANDLE>(Objects().last += 4);
  Objects().objects.emplace(handle, std::move(object));
  return handle;
}

std::shared_ptr<Object> FindObject(HANDLE handle) {
  const std::lock_guard lock(Objects().guard);
  const auto found = Objects().objects.find(handle);
  return found == Objects().objects.end() ? nullptr : found->second;
}

DWORD ErrorOf(int number) {
  constexpr std::pair<int, DWORD> kErrors[] = {{0, ERROR_SUCCESS},
                                               {ENOENT, ERROR_FILE_NOT_FOUND},
                                               {ENOTDIR, ERROR_PATH_NOT_FOUND},
                                               {ELOOP, ERROR_PATH_NOT_FOUND},
                                               {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
                                               {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
                                               {EACCES, ERROR_ACCESS_DENIED},
                                               {EPERM, ERROR_ACCESS_DENIED},
                                               {EROFS, ERROR_ACCESS_DENIED},
                                               {EISDIR, ERROR_ACCESS_DENIED},
                                               {EBUSY, ERROR_LOCK_VIOLATION},
                                               {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
                                               {ENOSPC, ERROR_DISK_FULL},
                                               {EDQUOT, ERROR_DISK_FULL},
                                               {EFBIG, ERROR_DISK_FULL},
                                               {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
                                               {EPIPE, ERROR_NO_DATA},
                                               {ECONNRESET, ERROR_NO_DATA}};
  const auto* const found = std::ranges::find(kErrors, number, &std::pair<int, DWORD>::first);
  return found == std::end(kErrors) ? ERROR_GEN_FAILURE : found->second;
}

std::FILE* OpenToRead(const char* path) {
  Descriptor file = Open(path, O_RDONLY);
  struct stat status = {};
  if (!file || fstat(file.Get(), &status) != 0) return nullptr;
  if (static_cast<std::size_t>(status.st_size) > kLargestFile) {
    errno = EFBIG;
    return nullptr;
  }
  std::FILE* const stream = fdopen(file.Get(), "rb");
  if (stream != nullptr) file.Release();
  return stream;
}

}  // namespace platform

BOOL CloseHandle(HANDLE handle) {
  if (platform::IsToFail("CloseHandle")) return FALSE;
  std::unique_lock lock(platform::Objects().guard);
  const auto closed = platform::Objects().objects.extract(handle);
  lock.unlock();  // the object may take its time to end
  return closed ? TRUE : platform::FailWith(ERROR_INVALID_HANDLE);
}
