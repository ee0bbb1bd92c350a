#pragma once

// An entry point refuses the load by an environment variable, which LoadLibraryW reads, because the
// dynamic linker takes no refusal and the library shows only its own exports.

#include <cstdint>
#include <string>

namespace platform {

constexpr char kRefusalVariable[] = "SIGIL_REFUSED_MODULE";

/// Its value for the module of this dynamic linker's handle.
inline std::string RefusalOf(const void* handle) {
  return std::to_string(reinterpret_cast<std::uintptr_t>(handle));
}

}  // namespace platform
