#pragma once

// The one reference that whoever gets an object of the Settings component holds on it.

#include <utility>

namespace Sigil {

template <typename Interface>
class Reference {
 public:
  Reference() = default;
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;
  ~Reference() { Reset(); }

  Interface* operator->() const { return m_pObject; }
  Interface& operator*() const { return *m_pObject; }
  Interface* Get() const { return m_pObject; }
  explicit operator bool() const { return m_pObject != nullptr; }

  /// Where an operation of the component puts the object.
  Interface** Out() {
    Reset();
    return &m_pObject;
  }

  void Reset() {
    if (Interface* object = std::exchange(m_pObject, nullptr)) object->Release();
  }

 private:
  Interface* m_pObject = nullptr;
};

}  // namespace Sigil
