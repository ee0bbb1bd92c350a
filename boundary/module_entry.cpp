// The library registers with the framework when it is loaded and does nothing else: no file is
// opened and no line logged before the first export is called.

#include "platform/mfc.h"
#include "platform/module.h"

static AFX_EXTENSION_MODULE g_extensionModule = {};

extern "C" int WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    if (!AfxInitExtensionModule(g_extensionModule, instance)) return 0;
    // The framework's list owns the object. Without memory for it the load goes on all the same.
    new CDynLinkLibrary(g_extensionModule, FALSE);
  } else if (reason == DLL_PROCESS_DETACH) {
    AfxTermExtensionModule(g_extensionModule, FALSE);
  }
  return 1;
}
