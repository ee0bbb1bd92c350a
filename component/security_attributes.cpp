#include "component/security_attributes.h"

namespace {

// A descriptor's size in the 32-bit system, which every owner of the shared objects uses.
constexpr SIZE_T kDescriptorSize = 20;
constexpr DWORD kRevision = 1;

}  // namespace

OpenSecurityAttributes::OpenSecurityAttributes()
    : m_pDescriptor(LocalAlloc(LPTR, kDescriptorSize)) {
  if (!m_pDescriptor) return;
  if (!InitializeSecurityDescriptor(m_pDescriptor.get(), kRevision) ||
      !SetSecurityDescriptorDacl(m_pDescriptor.get(), TRUE, nullptr, FALSE)) {
    m_pDescriptor.reset();
    return;
  }
  m_attributes.nLength = sizeof(m_attributes);
  m_attributes.lpSecurityDescriptor = m_pDescriptor.get();
  m_attributes.bInheritHandle = TRUE;
}
