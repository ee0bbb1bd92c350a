#pragma once

// The owner of a file descriptor, and the exception for a failed system call.

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/posix/machine/machine_file.h"

namespace peers {

using platform::Descriptor;

[[noreturn]] inline void ThrowSystemError(const std::string& what, int error = errno) {
  throw std::system_error(error, std::generic_category(), what);
}

}  // namespace peers
