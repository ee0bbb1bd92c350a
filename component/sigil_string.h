#pragma once

#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace Sigil {

/// A text as an object of the Settings component, which a component handle must have loaded. The
/// constructors throw SigilResult kCannotCreate when the component gives no object.
class CSigilString {
 public:
  explicit CSigilString(const wchar_t* text);
  CSigilString(const CSigilString& other);
  CSigilString(CSigilString&&) noexcept = default;
  CSigilString& operator=(const CSigilString&) = delete;

  /// Drops an exception of the component, because elements of containers must not throw here. A
  /// caller that wants the exception calls Release first.
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
