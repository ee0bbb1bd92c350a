#pragma once

#include "platform/owner.h"
#include "platform/security.h"

inline void FreeDescriptor(void* block) {
  LocalFree(block);
}

/// Security attributes that give everyone access, by a descriptor with a null access list, for
/// objects that processes under any account share.
class COpenSecurityAttributes {
 public:
  /// Builds the descriptor. On failure Get returns null.
  COpenSecurityAttributes();

  /// Returns null when the attributes could not be built or were given back.
  SECURITY_ATTRIBUTES* Get() { return m_pDescriptor ? &m_saAttributes : nullptr; }

  void Reset() { m_pDescriptor.Reset(); }

 private:
  Owner<void*, FreeDescriptor> m_pDescriptor;
  SECURITY_ATTRIBUTES m_saAttributes = {};
};
