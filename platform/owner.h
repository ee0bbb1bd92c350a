#pragma once

// One owner for everything that one call hands out and another takes back.

#include <utility>

/// Owns one value, as a handle, a block or a descriptor, and calls `kClose` on it when its scope
/// ends or on Reset. `kNone` means no value and is never closed. `kClose` is a function or a
/// lambda; in a header it has to be a function, because each source file has a different type for a
/// lambda.
template <typename Value, auto kClose, Value kNone = Value{}>
class Owner {
 public:
  Owner() = default;
  explicit Owner(Value value) : m_value(value) {}
  Owner(Owner&& other) noexcept : m_value(other.Release()) {}
  Owner& operator=(Owner&& other) noexcept {
    std::swap(m_value, other.m_value);
    return *this;
  }
  ~Owner() { Reset(); }

  Value Get() const { return m_value; }
  Value operator->() const { return m_value; }
  explicit operator bool() const { return m_value != kNone; }

  /// Returns the place for a value that a call hands out. Closes the held one first.
  Value* Out() {
    Reset();
    return &m_value;
  }

  /// Returns the value, which the caller has to close.
  Value Release() { return std::exchange(m_value, kNone); }

  /// Closes the value, if there is one.
  void Reset() {
    if (m_value != kNone) kClose(Release());
  }

 private:
  Value m_value = kNone;
};
