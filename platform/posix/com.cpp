#include "platform/com.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <new>

#include "platform/faults.h"
#include "platform/posix/xml/xml_document.h"
#include "platform/xml.h"

namespace {

thread_local unsigned t_openings = 0;

// A BSTR's length lies in the four bytes before it; here, in units.
UINT* Block(BSTR text) {
  return reinterpret_cast<UINT*>(text) - 1;
}

struct SystemText {
  HRESULT code;
  const wchar_t* text;
};

constexpr SystemText kSystemTexts[] = {
    {E_NOINTERFACE, L"No such interface supported"},
    {E_POINTER, L"Invalid pointer"},
    {E_FAIL, L"Unspecified error"},
    {DISP_E_TYPEMISMATCH, L"Type mismatch."},
    {REGDB_E_CLASSNOTREG, L"Class not registered"},
    {CO_E_NOTINITIALIZED, L"CoInitialize has not been called."},
    {E_OUTOFMEMORY, L"Not enough memory resources are available to complete this operation."},
};

/// One object for the whole process: nothing counts its references.
class TaskAllocator final : public IMalloc {
 public:
  HRESULT QueryInterface(const IID&, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  void Free(void* block) override { CoTaskMemFree(block); }
};

}  // namespace

BSTR SysAllocStringLen(const wchar_t* text, UINT length) {
  auto* const block =
      static_cast<UINT*>(std::malloc(sizeof(UINT) + (std::size_t{length} + 1) * sizeof(wchar_t)));
  if (block == nullptr) return nullptr;
  static_assert(alignof(wchar_t) <= sizeof(UINT));
  const BSTR copy = reinterpret_cast<BSTR>(block + 1);
  *block = length;
  std::wmemcpy(copy, text, length);
  copy[length] = L'\0';
  return copy;
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(Block(text));
}

UINT SysStringLen(BSTR text) {
  return text == nullptr ? 0 : *Block(text);
}

HRESULT CoInitialize(LPVOID) {
  if (const auto fault = platform::TakeFault("CoInitialize")) return static_cast<HRESULT>(*fault);
  return t_openings++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  platform::TakeFault("CoUninitialize");  // cannot fail; for the observer
  if (t_openings > 0) --t_openings;
}

HRESULT CoCreateInstance(const CLSID& classId, IUnknown*, DWORD, const IID& iid, LPVOID* object) {
  *object = nullptr;
  if (const auto fault = platform::TakeFault("CoCreateInstance"))
    return static_cast<HRESULT>(*fault);
  if (t_openings == 0) return CO_E_NOTINITIALIZED;
  if (!(classId == CLSID_DOMDocument60)) return REGDB_E_CLASSNOTREG;
  try {
    IUnknown* const created = platform::NewXmlDocument();
    const HRESULT result = created->QueryInterface(iid, object);
    created->Release();
    return result;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT OleRun(IUnknown*) {
  return S_OK;
}

void* CoTaskMemAlloc(SIZE_T bytes) {
  return std::malloc(bytes);
}

void CoTaskMemFree(void* block) {
  std::free(block);
}

HRESULT CoGetMalloc(DWORD, IMalloc** allocator) {
  static TaskAllocator instance;
  *allocator = &instance;
  return S_OK;
}

RPC_STATUS UuidToStringW(const UUID* uuid, RPC_WSTR* text) {
  constexpr std::size_t kCapacity = 37;
  *text = static_cast<wchar_t*>(std::malloc(kCapacity * sizeof(wchar_t)));
  if (*text == nullptr) return RPC_S_OUT_OF_MEMORY;
  const auto& tail = uuid->Data4;
  std::swprintf(*text, kCapacity, L"%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x", uuid->Data1,
                uuid->Data2, uuid->Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5],
                tail[6], tail[7]);
  return RPC_S_OK;
}

RPC_STATUS RpcStringFreeW(RPC_WSTR* text) {
  std::free(std::exchange(*text, nullptr));
  return RPC_S_OK;
}

const wchar_t* _com_error::ErrorMessage() const {
  const auto* const found = std::ranges::find(kSystemTexts, m_error, &SystemText::code);
  if (found != std::end(kSystemTexts)) return found->text;
  constexpr auto kFirstDispatchError = static_cast<HRESULT>(0x80040200U);
  constexpr auto kLastDispatchError = static_cast<HRESULT>(0x8004FFFFU);
  if (m_error > kFirstDispatchError && m_error <= kLastDispatchError)
    std::swprintf(m_message, std::size(m_message), L"IDispatch error #%d",
                  m_error - kFirstDispatchError);
  else
    std::swprintf(m_message, std::size(m_message), L"Unknown error 0x%0X",
                  static_cast<unsigned>(m_error));
  return m_message;
}

void _com_issue_error(HRESULT error) {
  throw _com_error(error);
}

_bstr_t::_bstr_t(const wchar_t* text)
    : m_text(text == nullptr ? nullptr
                             : SysAllocStringLen(text, static_cast<UINT>(std::wcslen(text)))) {
  if (text != nullptr && m_text == nullptr) _com_issue_error(E_OUTOFMEMORY);
}

_bstr_t::_bstr_t(const _variant_t& value) {
  if (value.vt != VT_BSTR) _com_issue_error(DISP_E_TYPEMISMATCH);
  m_text = SysAllocStringLen(value.bstrVal, SysStringLen(value.bstrVal));
  if (m_text == nullptr) _com_issue_error(E_OUTOFMEMORY);
}

BSTR* _bstr_t::GetAddress() {
  SysFreeString(std::exchange(m_text, nullptr));
  return &m_text;
}
