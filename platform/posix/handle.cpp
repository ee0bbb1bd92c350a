#include "platform/posix/handle.h"

#include <fcntl.h>

#include <cerrno>
#include <map>
#include <mutex>

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
  switch (number) {
    case 0:
      return ERROR_SUCCESS;
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
    case ELOOP:
      return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EBUSY:
      return ERROR_LOCK_VIOLATION;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ERROR_DISK_FULL;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case EPIPE:
    case ECONNRESET:
      return ERROR_NO_DATA;
    default:
      return ERROR_GEN_FAILURE;
  }
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
