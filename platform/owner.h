#pragma once

// One owner for everything that one call hands out and another takes back.

#include <utility>

/// Owns one value, as a handle, a block or a descriptor, and gives it to `kClose` when its scope
/// ends or on Reset. `kNone` is the value that stands for nothing and is never given back. `kClose`
/// is a function or a lambda of the value alone; in a header it has to be a function, since each
/// file would otherwise have a type of its own.
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

  /// Where a call puts the value; what was held is given back first.
  Value* Out() {
    Reset();
    return &m_value;
  }

  /// The value, which its receiver has to give back from now on.
  Value Release() { return std::exchange(m_value, kNone); }

  /// Gives the value back, if there is one.
  void Reset() {
    if (m_value != kNone) kClose(Release());
  }

 private:
  Value m_value = kNone;
};
