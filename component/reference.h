#pragma once

#include <exception>
#include <utility>

#include "platform/foreign.h"

namespace Sigil {

/// Owns one reference to an object of the Settings component. Released at the end of the scope or
/// by Reset.
///
/// An exception of the object's Release leaves Reset and the destructor, because the scope has
/// failed then. It is dropped only while another exception ends the scope, because two at once
/// would end the process.
template <typename Interface>
class CReference {
 public:
  CReference() = default;
  CReference(CReference&& other) noexcept : m_pObject(std::exchange(other.m_pObject, {})) {}
  CReference& operator=(CReference&&) = delete;
  ~CReference() noexcept(false) {
    if (std::uncaught_exceptions() <= m_nExceptions) {
      Reset();
      return;
    }
    try {
      Reset();
    } catch (...) {
    }
  }

  Interface* operator->() const { return m_pObject.Get(); }
  Interface& operator*() const { return *m_pObject.Get(); }
  explicit operator bool() const { return m_pObject.Get() != nullptr; }

  /// Returns the place for an object that an operation hands out. Releases the held one first.
  Interface** Out() {
    Reset();
    return m_pObject.Place();
  }

  void Reset() {
    ForeignObject<Interface> object = std::exchange(m_pObject, {});
    if (object.Get() != nullptr) object.Get()->Release();
  }

 private:
  ForeignObject<Interface> m_pObject;
  int m_nExceptions = std::uncaught_exceptions();  ///< Those in flight when this was made.
};

}  // namespace Sigil
