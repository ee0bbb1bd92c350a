// A library whose entry point tells in the environment what it was called for, and refuses the load
// when the environment wants it to.

#include <stdlib.h>

#include <string>

#include "platform/module.h"

extern "C" int WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  const char* const calls = getenv("ENTRY_CALLS");
  std::string all = calls == nullptr ? "" : calls;
  all += module == nullptr ? "?" : reason == DLL_PROCESS_ATTACH ? "+" : "-";
  setenv("ENTRY_CALLS", all.c_str(), 1);
  return getenv("ENTRY_REFUSES") == nullptr;
}

extern "C" __attribute__((visibility("default"))) int Answer() {
  return 42;
}
