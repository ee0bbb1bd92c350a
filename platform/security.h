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
constexpr UINT LMEM_FIXED = 0;
constexpr UINT LMEM_ZEROINIT = 0x40;
constexpr UINT LPTR = 0x40;

/// A block of `bytes` bytes, zero-filled with LMEM_ZEROINIT, aligned for every type. Null and the
/// last error on failure, which flags that ask for a movable block are too.
HLOCAL LocalAlloc(UINT flags, SIZE_T bytes);

/// Null. A null block is left alone.
HLOCAL LocalFree(HLOCAL block);

/// Makes the 20 bytes at `descriptor` one without lists and owners. FALSE and
/// ERROR_UNKNOWN_REVISION for a `revision` other than 1.
BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);

/// Notes whether an access list is there and whether a default mechanism gave it. FALSE and the
/// last error for a descriptor of another revision, or for a list that is not null: there are none
/// here.
BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, ACL* list,
                               BOOL defaulted);

#endif
