#pragma once

// Faults of the machine, for tests: an operation is told how many calls go well before each later
// one fails with a given error. Only the test build of the platform layer (SIGIL_FAULTS) has them;
// in every other build the question costs nothing and the answer is always "no fault".

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

/// The operations, each with a blank behind it, whose faults have ended without failing any call,
/// since the last time this was asked. A test with such a fault does not test what it says.
std::string TakeUnmetFaults();

/// Counts a call of `operation`; the error when this call is to fail.
std::optional<DWORD> TakeFault(const char* operation);

/// `observer` is told each operation that asks, before it is answered; null: nobody is.
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
