#include "platform/com.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>
#include <string_view>

#include "platform/faults.h"
#include "platform/posix/xml/xml_document.h"
#include "platform/security.h"
#include "platform/xml.h"

namespace {

thread_local unsigned t_openings = 0;

constexpr DWORD kInProcess = 1;  // of CLSCTX_ALL

// A BSTR's length lies in the four bytes before it; here, in units.
UINT* Block(BSTR text) {
  return reinterpret_cast<UINT*>(text) - 1;
}

struct SystemText {
  HRESULT code;
  const wchar_t* text;
};

constexpr HRESULT FromWin32(DWORD error) {
  return static_cast<HRESULT>(0x80070000U | error);
}

constexpr SystemText kSystemTexts[] = {
    {static_cast<HRESULT>(0x80004001U), L"Not implemented"},
    {E_NOINTERFACE, L"No such interface supported"},
    {E_POINTER, L"Invalid pointer"},
    {static_cast<HRESULT>(0x80004004U), L"Operation aborted"},
    {E_FAIL, L"Unspecified error"},
    {static_cast<HRESULT>(0x8000FFFFU), L"Catastrophic failure"},
    {static_cast<HRESULT>(0x80010106U), L"Cannot change thread mode after it is set."},
    {DISP_E_TYPEMISMATCH, L"Type mismatch."},
    {CLASS_E_NOAGGREGATION, L"Class does not support aggregation (or class object is remote)"},
    {REGDB_E_CLASSNOTREG, L"Class not registered"},
    {CO_E_NOTINITIALIZED, L"CoInitialize has not been called."},
    {FromWin32(ERROR_FILE_NOT_FOUND), L"The system cannot find the file specified."},
    {FromWin32(ERROR_ACCESS_DENIED), L"Access is denied."},
    {FromWin32(ERROR_INVALID_HANDLE), L"The handle is invalid."},
    {FromWin32(ERROR_NOT_ENOUGH_MEMORY),
     L"Not enough memory resources are available to process this command."},
    {E_OUTOFMEMORY, L"Not enough memory resources are available to complete this operation."},
    {E_INVALIDARG, L"The parameter is incorrect."},
    {FromWin32(ERROR_MOD_NOT_FOUND), L"The specified module could not be found."},
    {FromWin32(ERROR_BAD_EXE_FORMAT), L"%1 is not a valid Win32 application."},
};

const wchar_t* FindSystemText(DWORD messageId) {
  const HRESULT code = messageId <= 0xFFFF ? FromWin32(messageId) : static_cast<HRESULT>(messageId);
  const auto* const found = std::ranges::find(kSystemTexts, code, &SystemText::code);
  return found == std::end(kSystemTexts) ? nullptr : found->text;
}

constexpr HRESULT kFirstDispatchError = static_cast<HRESULT>(0x80040200U);
constexpr HRESULT kLastDispatchError = static_cast<HRESULT>(0x8004FFFFU);

wchar_t* NewErrorText(HRESULT error) {
  constexpr std::size_t kCapacity = 32;
  auto* const text = static_cast<wchar_t*>(LocalAlloc(LMEM_FIXED, kCapacity * sizeof(wchar_t)));
  if (text == nullptr) return nullptr;
  if (error > kFirstDispatchError && error <= kLastDispatchError)
    std::swprintf(text, kCapacity, L"IDispatch error #%d", error - kFirstDispatchError);
  else
    std::swprintf(text, kCapacity, L"Unknown error 0x%0X", static_cast<unsigned>(error));
  return text;
}

/// One object for the whole process: nothing counts its references.
class TaskAllocator final : public IMalloc {
 public:
  HRESULT QueryInterface(const IID& iid, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = iid == IID_IUnknown || iid == IID_IMalloc ? this : nullptr;
    return *object == nullptr ? E_NOINTERFACE : S_OK;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  void* Alloc(SIZE_T bytes) override { return CoTaskMemAlloc(bytes); }
  void* Realloc(void* block, SIZE_T bytes) override { return std::realloc(block, bytes); }
  void Free(void* block) override { CoTaskMemFree(block); }
};

}  // namespace

BSTR SysAllocString(const wchar_t* text) {
  if (text == nullptr || platform::TakeFault("SysAllocString")) return nullptr;
  const std::wstring_view view(text);
  return view.size() > UINT{} - 1 ? nullptr
                                  : SysAllocStringLen(text, static_cast<UINT>(view.size()));
}

BSTR SysAllocStringLen(const wchar_t* text, UINT length) {
  auto* const block =
      static_cast<UINT*>(std::malloc(sizeof(UINT) + (std::size_t{length} + 1) * sizeof(wchar_t)));
  if (block == nullptr) return nullptr;
  static_assert(alignof(wchar_t) <= sizeof(UINT));
  const BSTR copy = reinterpret_cast<BSTR>(block + 1);
  *block = length;
  if (text != nullptr) std::wmemcpy(copy, text, length);
  copy[length] = L'\0';
  return copy;
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(Block(text));
}

UINT SysStringLen(BSTR text) {
  return text == nullptr ? 0 : *Block(text);
}

void VariantInit(VARIANT* value) {
  *value = {VT_EMPTY, nullptr};
}

HRESULT VariantClear(VARIANT* value) {
  if (value->vt == VT_BSTR) SysFreeString(value->bstrVal);
  VariantInit(value);
  return S_OK;
}

HRESULT CoInitialize(LPVOID reserved) {
  if (const auto fault = platform::TakeFault("CoInitialize")) return static_cast<HRESULT>(*fault);
  if (reserved != nullptr) return E_INVALIDARG;
  return t_openings++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
  platform::TakeFault("CoUninitialize");  // Cannot fail; an observer is told.
  if (t_openings > 0) --t_openings;
}

HRESULT CoCreateInstance(const CLSID& classId, IUnknown* outer, DWORD context, const IID& iid,
                         LPVOID* object) {
  if (object == nullptr) return E_POINTER;
  *object = nullptr;
  if (const auto fault = platform::TakeFault("CoCreateInstance"))
    return static_cast<HRESULT>(*fault);
  if (t_openings == 0) return CO_E_NOTINITIALIZED;
  if (!(classId == CLSID_DOMDocument60) || (context & kInProcess) == 0) return REGDB_E_CLASSNOTREG;
  if (outer != nullptr) return CLASS_E_NOAGGREGATION;
  try {
    const IUnknownPtr created(platform::NewXmlDocument(), false);
    return created->QueryInterface(iid, object);
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

HRESULT OleRun(IUnknown* object) {
  if (const auto fault = platform::TakeFault("OleRun")) return static_cast<HRESULT>(*fault);
  return object == nullptr ? E_INVALIDARG : S_OK;
}

void* CoTaskMemAlloc(SIZE_T bytes) {
  return std::malloc(bytes);
}

void CoTaskMemFree(void* block) {
  std::free(block);
}

HRESULT CoGetMalloc(DWORD context, IMalloc** allocator) {
  static TaskAllocator instance;
  if (allocator == nullptr) return E_INVALIDARG;
  *allocator = context == 1 ? &instance : nullptr;
  return context == 1 ? S_OK : E_INVALIDARG;
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

DWORD FormatMessageW(DWORD flags, const void*, DWORD messageId, DWORD, LPWSTR buffer, DWORD,
                     void*) {
  constexpr DWORD kFlags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const auto fail = [](DWORD error) {
    SetLastError(error);
    return DWORD{0};
  };
  if (const auto fault = platform::TakeFault("FormatMessageW")) return fail(*fault);
  if (flags != kFlags || buffer == nullptr) return fail(ERROR_INVALID_PARAMETER);
  const wchar_t* const text = FindSystemText(messageId);
  if (text == nullptr) return fail(ERROR_MR_MID_NOT_FOUND);
  constexpr std::wstring_view kLineEnd = L"\r\n";
  const std::size_t length = std::wcslen(text);
  auto* const copy = static_cast<wchar_t*>(
      LocalAlloc(LMEM_ZEROINIT, (length + kLineEnd.size() + 1) * sizeof(wchar_t)));
  if (copy == nullptr) return fail(ERROR_NOT_ENOUGH_MEMORY);
  std::ranges::copy(kLineEnd, std::copy_n(text, length, copy));
  *reinterpret_cast<LPWSTR*>(buffer) = copy;
  return static_cast<DWORD>(length + kLineEnd.size());
}

_com_error& _com_error::operator=(const _com_error& other) {
  if (this == &other) return *this;
  m_error = other.m_error;
  LocalFree(std::exchange(m_message, nullptr));
  return *this;
}

_com_error::~_com_error() {
  if (m_message != nullptr) LocalFree(m_message);
}

const wchar_t* _com_error::ErrorMessage() const {
  if (m_message != nullptr) return m_message;
  DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(m_error), 0, reinterpret_cast<LPWSTR>(&m_message), 0, nullptr);
  if (length == 0) return m_message = NewErrorText(m_error);
  while (length > 0 && (m_message[length - 1] == L'\n' || m_message[length - 1] == L'\r'))
    m_message[--length] = L'\0';
  return m_message;
}

void _com_issue_error(HRESULT error) {
  throw _com_error(error);
}

_bstr_t::_bstr_t(const wchar_t* text) : m_text(SysAllocString(text)) {
  if (text != nullptr && m_text == nullptr) _com_issue_error(E_OUTOFMEMORY);
}

_bstr_t::_bstr_t(BSTR text, bool copy)
    : m_text(copy && text != nullptr ? SysAllocStringLen(text, SysStringLen(text)) : text) {
  if (text != nullptr && m_text == nullptr) _com_issue_error(E_OUTOFMEMORY);
}

_bstr_t::_bstr_t(const _variant_t& value)
    : _bstr_t(value.vt == VT_BSTR ? value.bstrVal : nullptr, true) {
  if (value.vt != VT_BSTR && value.vt != VT_EMPTY) _com_issue_error(DISP_E_TYPEMISMATCH);
}

BSTR* _bstr_t::GetAddress() {
  SysFreeString(Detach());
  return &m_text;
}
