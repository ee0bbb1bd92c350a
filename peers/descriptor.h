#pragma once

// The owner of a file descriptor.

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace peers {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : m_number(number) {}
  Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_number, other.m_number);
    return *this;
  }
  ~Descriptor() {
    if (m_number >= 0) close(m_number);
  }

  /// -1 when nothing is owned.
  int Get() const { return m_number; }
  explicit operator bool() const { return m_number >= 0; }

 private:
  int m_number = -1;
};

[[noreturn]] inline void ThrowSystemError(const std::string& what, int error = errno) {
  throw std::system_error(error, std::generic_category(), what);
}

}  // namespace peers
