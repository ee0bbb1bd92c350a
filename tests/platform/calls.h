#pragma once

// How calls of Windows tell that they failed.

#include <type_traits>

#include "platform/base.h"

namespace tests {

/// The last error of the call that gave `result`, which is then cleared for the next one.
/// ERROR_SUCCESS for a call that went well; all bits for a failure that left no error.
template <typename Result>
DWORD ErrorOf(Result result) {
  const DWORD error = GetLastError();
  SetLastError(ERROR_SUCCESS);
  bool failed = result == Result{};
  if constexpr (std::is_same_v<Result, HANDLE>) failed |= result == INVALID_HANDLE_VALUE;
  if (!failed) return ERROR_SUCCESS;
  return error == ERROR_SUCCESS ? ~DWORD{0} : error;
}

}  // namespace tests
