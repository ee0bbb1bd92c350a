#include "platform/com.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/faults.h"
#include "platform/xml.h"
#include "tests/support/test_machine.h"

namespace {

HRESULT Raised(auto action) {
  try {
    action();
  } catch (const _com_error& error) {
    return error.Error();
  }
  return S_OK;
}

HRESULT Create(const CLSID& classId, const IID& iid, IUnknownPtr& object,
               DWORD context = CLSCTX_ALL) {
  return CoCreateInstance(classId, nullptr, context, iid, reinterpret_cast<void**>(&object));
}

TEST(Com, OpensAndClosesOnItsThreadByCount) {
  IUnknownPtr object;
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), CO_E_NOTINITIALIZED);
  EXPECT_EQ(CoInitialize(nullptr), S_OK);
  EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
  CoUninitialize();
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), S_OK);
  EXPECT_EQ(OleRun(object), S_OK);
  object = nullptr;
  CoUninitialize();
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), CO_E_NOTINITIALIZED);
  CoUninitialize();  // one too many, without effect
  EXPECT_EQ(CoInitialize(nullptr), S_OK);
  CoUninitialize();
}

TEST(Com, CreatesWhatItKnows) {
  ASSERT_EQ(CoInitialize(nullptr), S_OK);
  IUnknownPtr object;
  EXPECT_EQ(Create(GUID{}, IID_IUnknown, object), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IXMLDOMNodeList, object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);

  ASSERT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), S_OK);
  IXMLDOMDocument2Ptr document = object;
  EXPECT_EQ(document->AddRef(), 3U);
  EXPECT_EQ(object->Release(), 2U);
  document.Release();
  EXPECT_EQ(object->AddRef(), 2U);
  EXPECT_EQ(object->Release(), 1U);
  object = nullptr;
  CoUninitialize();
}

TEST(Com, PointersAskAndRaise) {
  ASSERT_EQ(CoInitialize(nullptr), S_OK);
  IXMLDOMDocument2Ptr document;
  EXPECT_EQ(Raised([&] { document->put_async(VARIANT_FALSE); }), E_POINTER);
  EXPECT_EQ(Raised([&] { document.Release(); }), E_POINTER);
  EXPECT_EQ(Raised([] { _com_util::CheckError(E_FAIL); }), E_FAIL);
  EXPECT_EQ(Raised([] { _com_util::CheckError(S_FALSE); }), S_OK);
  IUnknownPtr object;
  ASSERT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), S_OK);
  document = object;
  IXMLDOMNodeListPtr other = document;
  EXPECT_EQ(other, nullptr);
  const IXMLDOMNodePtr node = document;
  EXPECT_NE(node, nullptr);
  document = nullptr;
  object = document;
  EXPECT_EQ(object, nullptr);
  CoUninitialize();
}

TEST(Com, TextsAreCopiesAndKnowTheirLength) {
  const BSTR text = SysAllocStringLen(L"a\0b", 3);
  EXPECT_EQ(SysStringLen(text), 3U);
  _bstr_t owner(text, false);
  _bstr_t copy(owner);
  EXPECT_EQ(copy.length(), 3U);
  EXPECT_EQ(std::wstring(copy, copy.length()), std::wstring(L"a\0b", 3));
  *copy.GetAddress() = SysAllocString(L"cd");
  EXPECT_STREQ(copy, L"cd");
  EXPECT_EQ(owner.length(), 3U);
  owner = copy;
  EXPECT_STREQ(owner, L"cd");
  owner = _bstr_t();
  EXPECT_TRUE(!owner);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0U);
  SysFreeString(nullptr);

  _variant_t value;
  EXPECT_EQ(_bstr_t(value).length(), 0U);
  value.vt = VT_NULL;
  EXPECT_EQ(Raised([&] { static_cast<void>(_bstr_t(value)); }), DISP_E_TYPEMISMATCH);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"x");
  EXPECT_STREQ(_bstr_t(value), L"x");
}

TEST(Com, ErrorsHaveTheSystemsTextOrTheirNumber) {
  std::vector<std::pair<HRESULT, std::wstring>> cases = {
      {static_cast<HRESULT>(0x80040200U), L"Unknown error 0x80040200"},
      {static_cast<HRESULT>(0x80049301U), L"IDispatch error #37121"},
      {static_cast<HRESULT>(0x8004FFFFU), L"IDispatch error #65023"},
      {static_cast<HRESULT>(0x8ABCDEF0U), L"Unknown error 0x8ABCDEF0"},
  };
  if (!tests::IsWine())  // which has other texts, or none
    cases.insert(cases.end(), {{E_POINTER, L"Invalid pointer"},
                               {E_FAIL, L"Unspecified error"},
                               {REGDB_E_CLASSNOTREG, L"Class not registered"},
                               {static_cast<HRESULT>(0x80070005U), L"Access is denied."}});
  for (const auto& [code, text] : cases) {
    const _com_error error(code);
    EXPECT_EQ(error.ErrorMessage(), text);
    _com_error copy(error);
    EXPECT_EQ(copy.ErrorMessage(), text);
    copy = error;
    EXPECT_EQ(copy.Error(), code);
    EXPECT_EQ(copy.ErrorMessage(), text);
  }
}

TEST(Com, UuidTextIsLowerCaseWithHyphens) {
  UUID uuid = {0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};
  RPC_WSTR text = nullptr;
  ASSERT_EQ(UuidToStringW(&uuid, &text), RPC_S_OK);
  EXPECT_STREQ(reinterpret_cast<const wchar_t*>(text), L"88d96a05-f192-11d4-a65f-0040963251e5");
  EXPECT_EQ(RpcStringFreeW(&text), RPC_S_OK);
  EXPECT_TRUE(text == nullptr || tests::IsWine());
}

TEST(Com, OneAllocatorServesAll) {
  IMalloc* allocator = nullptr;
  ASSERT_EQ(CoGetMalloc(1, &allocator), S_OK);
  void* block = allocator->Alloc(10);
  ASSERT_NE(block, nullptr);
  block = allocator->Realloc(block, 1000);
  CoTaskMemFree(block);
  allocator->Free(CoTaskMemAlloc(10));
  allocator->Release();
}

TEST(Com, FaultsAreTheirResults) {
  if (!platform::kHasFaults) GTEST_SKIP();
  platform::SetFault("CoInitialize", 0, static_cast<DWORD>(E_FAIL));
  EXPECT_EQ(CoInitialize(nullptr), E_FAIL);
  platform::ClearFaults();
  ASSERT_EQ(CoInitialize(nullptr), S_OK);
  platform::SetFault("CoCreateInstance", 0, static_cast<DWORD>(REGDB_E_CLASSNOTREG));
  platform::SetFault("SysAllocString", 1, 0);
  IUnknownPtr object;
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown, object), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(_bstr_t(L"x").length(), 1U);
  EXPECT_EQ(Raised([] { static_cast<void>(_bstr_t(L"x")); }), E_OUTOFMEMORY);
  platform::ClearFaults();
  CoUninitialize();
}

}  // namespace
