#include "platform/com.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/xml.h"
#include "tests/support/test_machine.h"

namespace {

HRESULT Create(const CLSID& classId, const IID& iid) {
  IUnknownPtr object;
  const HRESULT result =
      CoCreateInstance(classId, nullptr, CLSCTX_ALL, iid, reinterpret_cast<void**>(&object));
  EXPECT_EQ(SUCCEEDED(result), object != nullptr);
  return result == S_OK ? OleRun(object) : result;
}

TEST(Com, OpensByCountAndCreatesWhatItKnows) {
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown), CO_E_NOTINITIALIZED);
  EXPECT_EQ(CoInitialize(nullptr), S_OK);
  EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
  CoUninitialize();
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown), S_OK);
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IXMLDOMNodeList), E_NOINTERFACE);
  EXPECT_EQ(Create(GUID{}, IID_IUnknown), REGDB_E_CLASSNOTREG);
  CoUninitialize();
  EXPECT_EQ(Create(CLSID_DOMDocument60, IID_IUnknown), CO_E_NOTINITIALIZED);
  CoUninitialize();  // one too many, without effect
  EXPECT_EQ(CoInitialize(nullptr), S_OK);
  CoUninitialize();
}

TEST(Com, FailuresAreRaisedWithTheSystemsTextOrTheirNumber) {
  std::vector<std::pair<HRESULT, std::wstring>> cases = {
      {static_cast<HRESULT>(0x80040200U), L"Unknown error 0x80040200"},
      {static_cast<HRESULT>(0x80049301U), L"IDispatch error #37121"},
      {static_cast<HRESULT>(0x8004FFFFU), L"IDispatch error #65023"},
      {static_cast<HRESULT>(0x8ABCDEF0U), L"Unknown error 0x8ABCDEF0"}};
  if (!tests::IsWine())  // which has other texts, or none
    cases.insert(cases.end(), {{E_FAIL, L"Unspecified error"},
                               {REGDB_E_CLASSNOTREG, L"Class not registered"},
                               {static_cast<HRESULT>(0x80070005U), L"Access is denied."}});
  for (const auto& [code, text] : cases) try {
      _com_util::CheckError(code);
      FAIL();
    } catch (const _com_error& error) {
      EXPECT_EQ(error.Error(), code);
      EXPECT_EQ(error.ErrorMessage(), text);
    }
  EXPECT_NO_THROW(_com_util::CheckError(S_FALSE));
  EXPECT_THROW(IXMLDOMDocument2Ptr()->put_async(VARIANT_FALSE), _com_error);
  _variant_t value;
  EXPECT_EQ(_bstr_t(value).length(), 0U);
  value.vt = VT_NULL;
  EXPECT_THROW(static_cast<void>(_bstr_t(value)), _com_error);
}

TEST(Com, UuidTextIsLowerCaseWithHyphens) {
  const UUID uuid = CLSID_DOMDocument60;
  RPC_WSTR text = nullptr;
  ASSERT_EQ(UuidToStringW(&uuid, &text), RPC_S_OK);
  EXPECT_STREQ(reinterpret_cast<const wchar_t*>(text), L"88d96a05-f192-11d4-a65f-0040963251e5");
  EXPECT_EQ(RpcStringFreeW(&text), RPC_S_OK);
}

}  // namespace
