#pragma once

// The libraries that lie beside the program, loaded as every host should load them: by their full
// path, and the log before the others, because these name it by its file name alone. Windows would
// look for such a name in the current folder and along PATH too, and run what it finds there.

#include <string>

#include "platform/module.h"
#include "platform/owner.h"

namespace app {

inline void Unload(HMODULE module) {
  FreeLibrary(module);
}

struct Part {
  Owner<HMODULE, Unload> module;
  std::string fault;  ///< "is missing; put it beside sigilctl", ...; empty when it is loaded.
};

/// Loads the library of this file name. The log stays loaded.
Part LoadPart(const std::wstring& fileName);

/// Returns null when the part has no such function.
template <class Operation>
Operation Function(const Part& part, const char* name) {
  // Cast through `void (*)()` to avoid the cast warning.
  return reinterpret_cast<Operation>(
      reinterpret_cast<void (*)()>(GetProcAddress(part.module.Get(), name)));
}

}  // namespace app
