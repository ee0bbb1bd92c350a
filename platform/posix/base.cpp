#include "platform/base.h"

#include <cstring>

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

}  // namespace

bool operator==(const GUID& left, const GUID& right) {
  static_assert(sizeof(GUID) == 16, "no padding to compare");
  return std::memcmp(&left, &right, sizeof(GUID)) == 0;
}

DWORD GetLastError() {
  return t_lastError;
}

void SetLastError(DWORD error) {
  t_lastError = error;
}
