#pragma once

// Faults of the machine, for tests: after a number of good calls an operation fails with a given
// error. Only the test build of the platform layer (SIGIL_FAULTS) has them; in every other build
// nothing fails and the question costs nothing.

#include <optional>
#include <string>

#include "platform/base.h"

namespace platform {

/// In place of an error: the operation throws std::bad_alloc.
constexpr DWORD kThrows = ~DWORD{0};

#ifdef SIGIL_FAULTS

constexpr bool kHasFaults = true;

/// From its call number `goodCalls` + 1 on, counted from now, `operation` (its plain name, as
/// "CreateMutexW" or "CFile::Read") fails with `error` in its own way of failing.
void SetFault(const char* operation, unsigned goodCalls, DWORD error);

/// Ends all faults.
void ClearFaults();

/// Returns the operations, each with a blank behind it, whose faults have ended without failing any
/// call, since the last call of this. A test with such a fault tests nothing.
std::string TakeUnmetFaults();

/// Counts a call of `operation`. Returns the error when this call is to fail.
std::optional<DWORD> TakeFault(const char* operation);

/// Calls `observer` with each operation that asks, before the answer. Null ends that.
void SetObserver(void (*observer)(const char* operation));

#else

constexpr bool kHasFaults = false;

inline void SetFault(const char*, unsigned, DWORD) {}
inline void ClearFaults() {}
inline std::string TakeUnmetFaults() {
  return {};
}
constexpr std::optional<DWORD> TakeFault(const char*) {
  return std::nullopt;
}
inline void SetObserver(void (*)(const char*)) {}

#endif

}  // namespace platform
