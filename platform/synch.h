#pragma once

// Named mutexes.

#include "platform/base.h"
#include "platform/security.h"

#ifndef _WIN32

constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_ABANDONED = 0x80;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

/// Makes the mutex of this name, or opens it when it exists. All processes of the machine share it,
/// and it lasts as long as a handle to it is open. Returns null and the last error on failure, as
/// ERROR_ACCESS_DENIED on another account's machine; otherwise the last error is
/// ERROR_ALREADY_EXISTS for an opened mutex and 0 for a new one. `initialOwner` is FALSE, the name
/// has letters, digits, `_` and `-`, behind `Global\` or not; `attributes` is not looked at.
HANDLE CreateMutexW(const SECURITY_ATTRIBUTES* attributes, BOOL initialOwner, LPCWSTR name);

/// Waits up to `milliseconds` (INFINITE: without end) to own the mutex. WAIT_OBJECT_0; the owner
/// may wait for it again and then has to release it as often. WAIT_ABANDONED: owned too, but the
/// thread that owned it before ended without release. WAIT_TIMEOUT; WAIT_FAILED and the last error.
DWORD WaitForSingleObject(HANDLE mutex, DWORD milliseconds);

/// FALSE and ERROR_NOT_OWNER when the calling thread does not own the mutex.
BOOL ReleaseMutex(HANDLE mutex);

#endif
