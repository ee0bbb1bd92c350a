#pragma once

// What stands behind a HANDLE, and what the operations on them share.

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>

#include "platform/base.h"
#include "platform/faults.h"

namespace platform {

/// Objects under numbers that are never used twice. An object that is found stays in being for its
/// finder, also when its handle is closed meanwhile. Safe for any number of threads.
template <typename Type>
class HandleTable {
 public:
  std::uintptr_t Add(std::shared_ptr<Type> object) {
    const std::lock_guard lock(m_guard);
    m_last += 4;
    m_objects.emplace(m_last, std::move(object));
    return m_last;
  }

  /// Null, and the last error, for a number that is no handle.
  std::shared_ptr<Type> Find(std::uintptr_t handle) {
    const std::lock_guard lock(m_guard);
    const auto found = m_objects.find(handle);
    if (found != m_objects.end()) return found->second;
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }

  /// The same, and the number is no handle any more.
  std::shared_ptr<Type> Take(std::uintptr_t handle) {
    const std::lock_guard lock(m_guard);
    const auto node = m_objects.extract(handle);
    if (node) return node.mapped();
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
  }

 private:
  std::mutex m_guard;
  std::map<std::uintptr_t, std::shared_ptr<Type>> m_objects;
  std::uintptr_t m_last = 0;
};

/// What CloseHandle gives back.
class Object {
 public:
  virtual ~Object() = default;
};

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
