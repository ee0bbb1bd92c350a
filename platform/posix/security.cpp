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
constexpr WORD kDaclDefaulted = 0x8;
constexpr UINT kMovable = 0x2;

}  // namespace

using platform::FailWith;
using platform::IsToFail;

HLOCAL LocalAlloc(UINT flags, SIZE_T bytes) {
  if (IsToFail("LocalAlloc")) return nullptr;
  void* block = nullptr;
  if ((flags & kMovable) != 0)
    SetLastError(ERROR_INVALID_PARAMETER);
  else if (block = std::calloc(bytes == 0 ? 1 : bytes, 1); block == nullptr)
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return block;
}

HLOCAL LocalFree(HLOCAL block) {
  if (IsToFail("LocalFree")) return block;
  std::free(block);
  return nullptr;
}

BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
  if (IsToFail("InitializeSecurityDescriptor")) return FALSE;
  if (descriptor == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
  if (revision != SECURITY_DESCRIPTOR_REVISION) return FailWith(ERROR_UNKNOWN_REVISION);
  std::memset(descriptor, 0, kDescriptorSize);
  *static_cast<BYTE*>(descriptor) = static_cast<BYTE>(revision);
  return TRUE;
}

BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, ACL* list,
                               BOOL defaulted) {
  if (IsToFail("SetSecurityDescriptorDacl")) return FALSE;
  if (descriptor == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
  auto* const bytes = static_cast<BYTE*>(descriptor);
  if (*bytes != SECURITY_DESCRIPTOR_REVISION) return FailWith(ERROR_UNKNOWN_REVISION);
  if (present != FALSE && list != nullptr) return FailWith(ERROR_INVALID_ACL);
  const unsigned bits =
      present == FALSE ? 0U : (kDaclPresent | (defaulted == FALSE ? 0U : kDaclDefaulted));
  WORD control;
  std::memcpy(&control, bytes + kControlAt, sizeof control);
  control = static_cast<WORD>((control & ~(kDaclPresent | kDaclDefaulted)) | bits);
  std::memcpy(bytes + kControlAt, &control, sizeof control);
  return TRUE;
}
