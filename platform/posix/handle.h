#pragma once

// The objects behind handles, and helpers of the operations on them.

#include <cstdio>
#include <memory>

#include "platform/base.h"
#include "platform/faults.h"

namespace platform {

/// An object that CloseHandle ends.
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

/// Returns true when a test makes this call of `operation` fail, and sets the last error.
inline bool IsToFail(const char* operation) {
  const auto fault = TakeFault(operation);
  if (fault) SetLastError(*fault);
  return fault.has_value();
}

/// The Windows error for a number of <cerrno>.
DWORD ErrorOf(int number);

/// Opens a file for reading by the rules of machine_file.h. Returns null and errno on failure,
/// EFBIG for a file that is larger than kLargestFile.
std::FILE* OpenToRead(const char* path);

}  // namespace platform
