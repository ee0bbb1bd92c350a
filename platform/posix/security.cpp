#include "platform/security.h"

#include <cstdlib>
#include <cstring>

#include "platform/posix/handle.h"

// The record that the 32-bit SDK has: revision, a spare byte, control bits, and four pointers,
// which stay null here and so need no more room than there.

namespace {

constexpr std::size_t kDescriptorSize = 20;
constexpr std::size_t kControlAt = 2;
constexpr WORD kDaclPresent = 0x4;

}  // namespace

using platform::FailWith;
using platform::IsToFail;

HLOCAL LocalAlloc(UINT, SIZE_T bytes) {
  if (IsToFail("LocalAlloc")) return nullptr;
  void* const block = std::calloc(bytes, 1);
  if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return block;
}

HLOCAL LocalFree(HLOCAL block) {
  platform::TakeFault("LocalFree");  // never fails; for the observer
  std::free(block);
  return nullptr;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
  if (IsToFail("InitializeSecurityDescriptor")) return FALSE;
  if (revision != SECURITY_DESCRIPTOR_REVISION) return FailWith(ERROR_UNKNOWN_REVISION);
  std::memset(descriptor, 0, kDescriptorSize);
  *static_cast<BYTE*>(descriptor) = static_cast<BYTE>(revision);
  return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, ACL*, BOOL) {
  if (IsToFail("SetSecurityDescriptorDacl")) return FALSE;
  const WORD control = present == FALSE ? 0 : kDaclPresent;
  std::memcpy(static_cast<BYTE*>(descriptor) + kControlAt, &control, sizeof control);
  return TRUE;
}
