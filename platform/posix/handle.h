#pragma once

// What stands behind a HANDLE, and what the operations on them share.

#include <cstdio>
#include <memory>

#include "platform/base.h"
#include "platform/faults.h"

namespace platform {

/// What CloseHandle gives back.
class Object {
 public:
  virtual ~Object() = default;
};

/// Safe for any number of threads. No handle is used twice, and an object that is found stays in
/// being for its finder, also when its handle is closed meanwhile.
HANDLE AddObject(std::shared_ptr<Object> object);
std::shared_ptr<Object> FindObject(HANDLE handle);

/// Null, and the last error, for a handle of another kind too.
template <typename Type>
std::shared_ptr<Type> FindObjectAs(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Type>(FindObject(handle));
  if (object == nullptr) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

/// FALSE with this last error.
inline BOOL FailWith(DWORD error) {
  SetLastError(error);
  return FALSE;
}

/// Whether a test wants this call of `operation` to fail; the last error is set then.
inline bool IsToFail(const char* operation) {
  const auto fault = TakeFault(operation);
  if (fault) SetLastError(*fault);
  return fault.has_value();
}

/// The Windows error for a number of <cerrno>.
DWORD ErrorOf(int number);

/// Opens a file for reading, as machine_file.h tells. Null and errno on failure, EFBIG for a file
/// that is larger than kLargestFile.
std::FILE* OpenToRead(const char* path);

}  // namespace platform
