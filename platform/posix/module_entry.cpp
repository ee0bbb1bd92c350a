// Linked into a shared library that has a DllMain. Calls it when the library is loaded and before
// it is unloaded, not for threads.

#include <dlfcn.h>
#include <stdlib.h>

#include "platform/module.h"
#include "platform/posix/module_refusal.h"

extern "C" int WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

HINSTANCE g_module = nullptr;

void* OwnHandle() {
  Dl_info own;
  if (dladdr(&g_module, &own) == 0) return nullptr;
  void* const handle = dlopen(own.dli_fname, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);  // it does not count as a use
  return handle;
}

__attribute__((constructor)) void Attach() {
  g_module = static_cast<HINSTANCE>(OwnHandle());
  if (DllMain(g_module, DLL_PROCESS_ATTACH, nullptr) == 0)
    setenv(platform::kRefusalVariable, platform::RefusalOf(g_module).c_str(), 1);
}

__attribute__((destructor)) void Detach() {
  DllMain(g_module, DLL_PROCESS_DETACH, nullptr);
}

}  // namespace
