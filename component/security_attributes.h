#pragma once

// Security attributes that give everyone access: a descriptor with a null access list, for objects
// that processes under any account share.

#include <memory>

#include "platform/security.h"

class OpenSecurityAttributes {
 public:
  /// Builds the descriptor; a failure leaves no attributes.
  OpenSecurityAttributes();

  /// Null when they could not be built or were given back.
  SECURITY_ATTRIBUTES* Get() { return m_pDescriptor ? &m_attributes : nullptr; }

  /// Gives the descriptor back.
  void Reset() { m_pDescriptor.reset(); }

 private:
  struct Free {
    void operator()(void* block) const { LocalFree(block); }
  };

  std::unique_ptr<void, Free> m_pDescriptor;
  SECURITY_ATTRIBUTES m_attributes = {};
};
