#pragma once

// Entry points of libraries that are found at run time.

#include <cstdint>

#include "platform/module.h"

inline bool IsLoaded(HMODULE module) {
  return module != nullptr && reinterpret_cast<std::intptr_t>(module) != -1;
}

/// Null when `module` has no entry of that name.
template <typename Function>
Function EntryPoint(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}
