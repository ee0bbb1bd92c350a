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

  Interface* operator->() const { return m_object; }
  Interface& operator*() const { return *m_object; }
  Interface* Get() const { return m_object; }
  explicit operator bool() const { return m_object != nullptr; }

  /// Where an operation of the component puts the object.
  Interface** Out() {
    Reset();
    return &m_object;
  }

  void Reset() {
    if (Interface* object = std::exchange(m_object, nullptr)) object->Release();
  }

 private:
  Interface* m_object = nullptr;
};

}  // namespace Sigil
