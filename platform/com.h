#pragma once

// COM and its C++ support, and UUID text. Texts are wide; a BSTR knows its length. Objects and
// results follow COM's rules: an out-parameter is never null and receives one reference or an own
// copy, which the caller gives back.

#include "platform/base.h"

#ifdef _WIN32

// Two repairs to MinGW-w64's `ErrorMessage`. It forgets to ignore the inserts of a system text, so
// that such a text would be refused; and it formats with a call that came with Windows Vista.
#include <cstdio>
#pragma push_macro("FormatMessage")
#undef FormatMessage
#define FormatMessage(flags, ...) \
  FormatMessageW((flags) | FORMAT_MESSAGE_IGNORE_INSERTS, __VA_ARGS__)
#define swprintf_s _snwprintf
#include <comdef.h>
#undef swprintf_s
#pragma pop_macro("FormatMessage")

_COM_SMARTPTR_TYPEDEF(IUnknown, IID_IUnknown);

// As the SDK has it; MinGW-w64's would change the UUID.
inline RPC_STATUS UuidToStringW(const UUID* uuid, RPC_WSTR* text) {
  return ::UuidToStringW(const_cast<UUID*>(uuid), text);
}

#else

#include <utility>

constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);
constexpr HRESULT CO_E_NOTINITIALIZED = static_cast<HRESULT>(0x800401F0U);

/// Wide text with its length before it and a terminator after it. Null is empty.
using BSTR = wchar_t*;

/// A copy of `length` units of text; null when memory is short.
BSTR SysAllocStringLen(const wchar_t* text, UINT length);
void SysFreeString(BSTR text);
/// In units; 0 for null.
UINT SysStringLen(BSTR text);

using VARIANT_BOOL = std::int16_t;
constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

constexpr std::uint16_t VT_NULL = 1;
constexpr std::uint16_t VT_BSTR = 8;

/// `bstrVal` counts only for VT_BSTR; the value owns it.
struct VARIANT {
  std::uint16_t vt;
  BSTR bstrVal;
};

struct IUnknown {
  /// Another interface of the same object, with a reference; null and E_NOINTERFACE without one.
  virtual HRESULT QueryInterface(const IID& iid, void** object) = 0;
  /// Both return the number of references.
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};

/// The allocator of CoTaskMemAlloc.
struct IMalloc : IUnknown {
  virtual void Free(void* block) = 0;

 protected:
  ~IMalloc() = default;
};

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

constexpr DWORD CLSCTX_ALL = 0x17;

/// Opens COM on this thread: S_OK, or S_FALSE when it was open; each is undone by one
/// CoUninitialize. `reserved` is null.
HRESULT CoInitialize(LPVOID reserved);
void CoUninitialize();

/// A new object of a class, in `object`, which is null on failure. `outer` is null and `context`
/// CLSCTX_ALL. CO_E_NOTINITIALIZED on a thread without COM; REGDB_E_CLASSNOTREG for another class
/// than DOMDocument60 (xml.h); E_NOINTERFACE.
HRESULT CoCreateInstance(const CLSID& classId, IUnknown* outer, DWORD context, const IID& iid,
                         LPVOID* object);

/// Brings an object into the running state, in which objects of this process always are: S_OK.
HRESULT OleRun(IUnknown* object);

void* CoTaskMemAlloc(SIZE_T bytes);
void CoTaskMemFree(void* block);
/// The one allocator of the process. `context` is 1.
HRESULT CoGetMalloc(DWORD context, IMalloc** allocator);

using RPC_STATUS = std::int32_t;
using RPC_WSTR = wchar_t*;
constexpr RPC_STATUS RPC_S_OK = 0;
constexpr RPC_STATUS RPC_S_OUT_OF_MEMORY = 14;

/// 36 characters in lower case with hyphens, as RFC 4122; freed by RpcStringFreeW.
RPC_STATUS UuidToStringW(const UUID* uuid, RPC_WSTR* text);
/// Frees the text and leaves null. Null is fine.
RPC_STATUS RpcStringFreeW(RPC_WSTR* text);

/// The exception for a failing result of COM.
class _com_error {
 public:
  explicit _com_error(HRESULT error) : m_error(error) {}

  /// The system's English text; "IDispatch error #%d" for codes without one above 0x80040200 up to
  /// 0x8004FFFF, "Unknown error 0x%0lX" for the others. Lives as long as this.
  const wchar_t* ErrorMessage() const;

 private:
  HRESULT m_error;
  mutable wchar_t m_message[32] = {};  // where the system has no text
};

[[noreturn]] void _com_issue_error(HRESULT error);

namespace _com_util {
inline void CheckError(HRESULT result) {
  if (FAILED(result)) _com_issue_error(result);
}
}  // namespace _com_util

/// An owned VARIANT. `&value` is where a function puts one, once.
class _variant_t : public VARIANT {
 public:
  _variant_t() : VARIANT{} {}
  _variant_t(const _variant_t&) = delete;
  _variant_t& operator=(const _variant_t&) = delete;
  ~_variant_t() {
    if (vt == VT_BSTR) SysFreeString(bstrVal);
  }
};

/// An owned BSTR. The constructors that copy throw E_OUTOFMEMORY when memory is short.
class _bstr_t {
 public:
  _bstr_t() = default;
  _bstr_t(const wchar_t* text);
  /// The text of a VT_BSTR; raises DISP_E_TYPEMISMATCH for others.
  _bstr_t(const _variant_t& value);
  _bstr_t(const _bstr_t&) = delete;
  _bstr_t& operator=(const _bstr_t&) = delete;
  ~_bstr_t() { SysFreeString(m_text); }

  operator const wchar_t*() const { return m_text; }
  operator wchar_t*() const { return m_text; }
  UINT length() const { return SysStringLen(m_text); }

  /// Returns the place for a text that a function hands out.
  BSTR* GetAddress();

 private:
  BSTR m_text = nullptr;
};

template <typename Interface_, const IID* iid>
struct _com_IIID {
  using Interface = Interface_;
  static const IID& GetIID() { return *iid; }
};

/// One reference to an object, or empty. Taking it from a pointer to another interface asks the
/// object for this one: empty if it has none (or is null); any other failure is raised.
template <typename IIID>
class _com_ptr_t {
 public:
  using Interface = typename IIID::Interface;

  _com_ptr_t() = default;
  _com_ptr_t(std::nullptr_t) {}
  _com_ptr_t(Interface* object) : m_object(object) {
    if (m_object != nullptr) m_object->AddRef();
  }
  _com_ptr_t(const _com_ptr_t& other) : _com_ptr_t(other.m_object) {}
  _com_ptr_t(_com_ptr_t&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  template <typename Other>
  _com_ptr_t(const _com_ptr_t<Other>& other) {
    if (other == nullptr) return;
    void* object = nullptr;
    const HRESULT result = other->QueryInterface(IIID::GetIID(), &object);
    if (SUCCEEDED(result))
      m_object = static_cast<Interface*>(object);
    else if (result != E_NOINTERFACE)
      _com_issue_error(result);
  }
  _com_ptr_t& operator=(_com_ptr_t other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }
  ~_com_ptr_t() {
    if (m_object != nullptr) m_object->Release();
  }

  operator Interface*() const { return m_object; }
  /// Empty: raises E_POINTER.
  Interface* operator->() const {
    if (m_object == nullptr) _com_issue_error(E_POINTER);
    return m_object;
  }

  /// Returns the place for an object that a function hands out. Releases the held one first.
  Interface** operator&() {
    *this = nullptr;
    return &m_object;
  }

 private:
  Interface* m_object = nullptr;
};

// NOLINTBEGIN(bugprone-macro-parentheses): both are names.
#define _COM_SMARTPTR_TYPEDEF(Interface, iid) \
  using Interface##Ptr = _com_ptr_t<_com_IIID<Interface, &iid>>
// NOLINTEND(bugprone-macro-parentheses)

_COM_SMARTPTR_TYPEDEF(IUnknown, IID_IUnknown);

#endif
