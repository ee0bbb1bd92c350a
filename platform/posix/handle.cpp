#include "platform/posix/handle.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/posix/machine/machine_file.h"

namespace platform {

namespace {

HandleTable<Object>& Objects() {
  static HandleTable<Object> objects;
  return objects;
}

}  // namespace

HANDLE AddObject(std::shared_ptr<Object> object) {
  return reinterpret_cast<HANDLE>(Objects().Add(std::move(object)));
}

std::shared_ptr<Object> FindObject(HANDLE handle) {
  return Objects().Find(reinterpret_cast<std::uintptr_t>(handle));
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
  if (static_cast<std::size_t>(status.st_size) <= kLargestFile) return fdopen(file.Release(), "rb");
  errno = EFBIG;
  return nullptr;
}

}  // namespace platform

BOOL CloseHandle(HANDLE handle) {
  if (platform::IsToFail("CloseHandle")) return FALSE;
  return platform::Objects().Take(reinterpret_cast<std::uintptr_t>(handle)) != nullptr;
}
