#pragma once

// A text as an object of the Settings component.

#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace Sigil {

/// The component is found, never loaded, here: a component handle must have loaded it. Making one,
/// or a copy, throws SigilResult kCannotCreate when the component gives no object.
class CSigilString {
 public:
  explicit CSigilString(const wchar_t* text);
  CSigilString(const CSigilString& other);
  CSigilString& operator=(const CSigilString&) = delete;
  virtual ~CSigilString() = default;

  const wchar_t* GetText() const { return m_pString->GetText(); }
  const wchar_t* GetDisplayText() const { return m_pString->GetDisplayText(); }

 private:
  CSigilString();

  Reference<String> m_pString;
};

}  // namespace Sigil
