#pragma once

#include <exception>
#include <utility>

#include "platform/foreign.h"

namespace Sigil {

/// Holds the one reference that whoever gets an object of the Settings component has on it, and
/// gives it back at the end of its scope or by Reset.
///
/// A Release that throws is a failure of the scope in which it is called, so its exception leaves
/// Reset and the destructor too. Only where another exception is already ending that scope is it
/// dropped, since two at once would end the process.
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

  /// Where an operation of the component puts the object. What was held is given back first.
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
