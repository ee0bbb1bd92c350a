#pragma once

#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace Sigil {

/// A text as an object of the Settings component. The component is found here, never loaded: a
/// component handle must have loaded it. Making one, or a copy, throws SigilResult kCannotCreate
/// when the component gives no object.
class CSigilString {
 public:
  explicit CSigilString(const wchar_t* text);
  CSigilString(const CSigilString& other);
  CSigilString(CSigilString&&) noexcept = default;
  CSigilString& operator=(const CSigilString&) = delete;

  /// Texts stand in containers, whose elements must not throw when they are destroyed: what the
  /// component throws here is dropped. Whoever wants to know of it calls Release first.
  virtual ~CSigilString() noexcept;

  /// Gives the object back. Nothing but the destructor may follow.
  void Release() { m_pString.Reset(); }

  const wchar_t* GetText() const { return m_pString->GetText(); }
  const wchar_t* GetDisplayText() const { return m_pString->GetDisplayText(); }

 private:
  CSigilString();

  CReference<String> m_pString;
};

}  // namespace Sigil
