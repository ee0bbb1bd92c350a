#pragma once

// Security descriptors, as far as a null access list goes: everyone has access. Elsewhere than on
// Windows nothing looks at them; they are kept as documented.

#include "platform/base.h"

#ifndef _WIN32

using PSECURITY_DESCRIPTOR = void*;

struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};

struct ACL;

constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
constexpr UINT LPTR = 0x40;

/// Returns a zero-filled block of `bytes` bytes, aligned for every type; null and the last error on
/// failure. `flags` are LPTR.
HLOCAL LocalAlloc(UINT flags, SIZE_T bytes);

/// Frees the block, unless it is null. Returns null.
HLOCAL LocalFree(HLOCAL block);

/// Makes the 20 bytes at `descriptor` one without lists and owners. FALSE and
/// ERROR_UNKNOWN_REVISION for another `revision`.
BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);

/// Records whether an access list is present. `list` is null, which grants everyone access, and
/// `defaulted` FALSE.
BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, ACL* list,
                               BOOL defaulted);

#endif
