#include <new>

#include "platform/mfc.h"

namespace {

// No destructor: the record of the library is closed after static objects are gone.
constinit CDynLinkLibrary* g_firstLibrary = nullptr;

}  // namespace

BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module) {
  state = {TRUE, module};
  return TRUE;
}

void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL) {
  for (CDynLinkLibrary** link = &g_firstLibrary; *link != nullptr;) {
    CDynLinkLibrary* const each = *link;
    if (&each->m_module == &state) {
      *link = each->m_next;
      delete each;
    } else {
      link = &each->m_next;
    }
  }
  state = {};
}

CDynLinkLibrary::CDynLinkLibrary(AFX_EXTENSION_MODULE& state, BOOL)
    : m_module(state), m_next(g_firstLibrary) {
  g_firstLibrary = this;
}

void* CDynLinkLibrary::operator new(std::size_t size) noexcept {
  return ::operator new(size, std::nothrow);
}

void CDynLinkLibrary::operator delete(void* block) noexcept {
  ::operator delete(block);
}
