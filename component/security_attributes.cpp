#include "component/security_attributes.h"

namespace {

// The size of a descriptor on 32-bit Windows.
constexpr SIZE_T kDescriptorSize = 20;
constexpr DWORD kRevision = 1;

}  // namespace

COpenSecurityAttributes::COpenSecurityAttributes()
    : m_pDescriptor(LocalAlloc(LPTR, kDescriptorSize)) {
  if (!m_pDescriptor) return;
  if (!InitializeSecurityDescriptor(m_pDescriptor.Get(), kRevision) ||
      !SetSecurityDescriptorDacl(m_pDescriptor.Get(), TRUE, nullptr, FALSE)) {
    m_pDescriptor.Reset();
    return;
  }
  m_saAttributes.nLength = sizeof(m_saAttributes);
  m_saAttributes.lpSecurityDescriptor = m_pDescriptor.Get();
  m_saAttributes.bInheritHandle = TRUE;
}
