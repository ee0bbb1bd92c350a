#pragma once

// How an entry point that refuses the load is told to LoadLibraryW: by an environment variable, as
// the library shows nothing but its own exports and the dynamic linker takes no refusal.

#include <cstdint>
#include <string>

namespace platform {

constexpr char kRefusalVariable[] = "SIGIL_REFUSED_MODULE";

/// Its value for the module of this dynamic linker's handle.
inline std::string RefusalOf(const void* handle) {
  return std::to_string(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace platform
