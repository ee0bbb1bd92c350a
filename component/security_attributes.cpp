#include "component/security_attributes.h"

namespace {

// A descriptor's size in the 32-bit system, which every owner of the shared objects uses.
constexpr SIZE_T kDescriptorSize = 20;
constexpr DWORD kRevision = 1;

}  // namespace

OpenSecurityAttributes::OpenSecurityAttributes() : m_descriptor(LocalAlloc(LPTR, kDescriptorSize)) {
  if (!m_descriptor) return;
  if (!InitializeSecurityDescriptor(m_descriptor.get(), kRevision) ||
      !SetSecurityDescriptorDacl(m_descriptor.get(), TRUE, nullptr, FALSE)) {
    m_descriptor.reset();
    return;
  }
  m_attributes.nLength = sizeof(m_attributes);
  m_attributes.lpSecurityDescriptor = m_descriptor.get();
  m_attributes.bInheritHandle = TRUE;
}
