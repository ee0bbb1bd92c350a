#include "component/sigil_string.h"

#include "component/entry_point.h"
#include "component/names.h"

namespace Sigil {

CSigilString::CSigilString() {
  const HMODULE component = GetModuleHandleW(kComponentFile);
  if (IsLoaded(component)) {
    const auto pfnCreate = EntryPoint<CreateInstanceFunction>(component, kCreateInstanceName);
    if (pfnCreate != nullptr)
      CallForeign(pfnCreate, &kStringFirstIdentity, &kStringSecondIdentity,
                  reinterpret_cast<void**>(m_pString.Out()));
  }
  if (!m_pString) throw kCannotCreate;
}

CSigilString::CSigilString(const wchar_t* text) : CSigilString() {
  m_pString->SetKind(0);
  m_pString->SetText(text);
}

CSigilString::CSigilString(const CSigilString& other) : CSigilString() {
  m_pString->SetKind(other.m_pString->GetKind());
  m_pString->SetText(other.m_pString->GetText());
}

CSigilString::~CSigilString() noexcept {
  try {
    Release();
  } catch (...) {
  }
}

}  // namespace Sigil
