#include "policy/watermark_policy_xml_parser.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"

namespace tests {
namespace {

constexpr int kSmallest = -2147483647 - 1;

std::string Utf8(const CString& text) {
  return platform::ToUtf8(std::wstring_view(text.GetString()));
}

/// The object of one pass, and what it logs.
class PolicyReader : public testing::Test {
 protected:
  ~PolicyReader() override { CWatermarkPolicyXMLParser::DeleteInstance(); }

  static CWatermarkPolicyXMLParser* Reader() { return CWatermarkPolicyXMLParser::GetInstance(); }
  int LoadDocument() { return Reader()->SetXmlData(Wide(m_told("document")).c_str()); }
  static std::wstring Wide(const std::string& text) { return platform::FromUtf8(text); }

  const Transcript m_told{{"policy/transcripts/reader"}};
  TestMachine m_machine;
};

TEST_F(PolicyReader, AnswersFromTheDocument) {
  ASSERT_EQ(LoadDocument(), 0);
  const auto ids = [](int policy, int result) {
    std::vector<CString> list = {L"kept"};
    EXPECT_EQ(Reader()->GetPolicyInfo(policy, list), result) << policy;
    std::string joined;
    for (const CString& id : list) joined += Utf8(id) + "|";
    return joined;
  };
  EXPECT_EQ(ids(1, 0), "kept|E2|E1|E2||");
  EXPECT_EQ(ids(kSmallest, 0), "kept|最小|");
  EXPECT_EQ(ids(2, -12), "kept|");

  const std::pair<int, const char*> scopes[] = {{1, "2"}, {kSmallest, ""}, {5, ""}};
  for (const auto& [policy, scope] : scopes)
    EXPECT_EQ(Utf8(Reader()->GetPrinterScope(policy)), scope) << policy;

  const struct {
    const wchar_t *id, *name;
    const char* text;
  } elements[] = {{L"E1", L"Kind", "1"},
                  {L"E1", L"Text", "社 <外秘> {WinUser}!"},
                  {L"E1", L"Name", "second"},
                  {L"E']/*", L"Kind", "3"},
                  {L"e1", L"Kind", ""},
                  {L"", L"Kind", ""},
                  // Queries that are none, since an ID holds a quote, and one for no element.
                  {L"\"", L"Kind", ""},
                  {L"\"]|//*[\"", L"Kind[", ""},
                  {L"E1", L"@ID", ""}};
  for (const auto& element : elements)
    EXPECT_EQ(Utf8(Reader()->GetWatermarkElement(element.id, element.name)), element.text)
        << platform::ToUtf8(element.id);
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, m_told("queries that are none"));
}

TEST_F(PolicyReader, FindsAnAttributeInAnyCase) {
  CWatermarkPolicyXMLParser* const reader = Reader();  // Opens COM on this thread.
  IXMLDOMDocument2Ptr document;
  ASSERT_EQ(CoCreateInstance(CLSID_DOMDocument60, nullptr, CLSCTX_ALL, IID_IXMLDOMDocument2,
                             reinterpret_cast<void**>(&document)),
            S_OK);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  document->loadXML(_bstr_t(L"<HLE vers='1' vERSION='7' version='8'/>"), &loaded);
  IXMLDOMNodePtr node;
  document->selectSingleNode(_bstr_t(L"HLE"), &node);
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"Version", L"7"}, {L"VERS", L"1"}, {L"Ver", L""}};
  for (const auto& [name, value] : cases)
    EXPECT_STREQ(reader->GetAttributeValue(node, name), value);
}

TEST_F(PolicyReader, TellsWhatIsWrongWithADocument) {
  const struct {
    const wchar_t* text;
    int result;
    bool isLimitOfWine = false;  // It takes what Windows refuses and refuses encodings.
  } cases[] = {
      {L"", -1},
      {L" ", -10},
      {L"\xFEFF<QuietMIMOSA><HLE/></QuietMIMOSA>", 0},
      {L"<QuietMIMOSA><HLE></QuietMIMOSA>", -10},
      {L"<?xml version='1.0' encoding='Shift_JIS'?><QuietMIMOSA><HLE/></QuietMIMOSA>", 0, true},
      {L"<!DOCTYPE QuietMIMOSA><QuietMIMOSA><HLE/></QuietMIMOSA>", -10, true},
      {L"<QuietMIMOSA><hle/></QuietMIMOSA>", -11},
      {L"<Other><QuietMIMOSA><HLE/></QuietMIMOSA></Other>", -11},
      {L"<QuietMIMOSA xmlns='urn:x'><HLE/></QuietMIMOSA>", -11},
      {L"<QuietMIMOSA><HLE/></QuietMIMOSA>", 0}};
  for (const auto& one : cases) {
    if (one.isLimitOfWine && IsWine()) continue;
    EXPECT_EQ(Reader()->SetXmlData(one.text), one.result) << platform::ToUtf8(one.text);
    EXPECT_EQ(LoadDocument(), 0) << "the next is new";
    CWatermarkPolicyXMLParser::DeleteInstance();
  }
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, "");
}

// Each query of a reader that has no root, or whose service fails, ends in its line and its
// outcome.
TEST_F(PolicyReader, ContainsEveryException) {
  std::vector<CString> ids;
  EXPECT_EQ(Reader()->GetPolicyInfo(1, ids), -101);
  EXPECT_TRUE(Reader()->GetPrinterScope(1).IsEmpty());
  EXPECT_TRUE(Reader()->GetWatermarkElement(L"E1", L"Kind").IsEmpty());
  EXPECT_TRUE(Reader()->GetAttributeValue(IXMLDOMNodePtr(), L"Version").IsEmpty());
  ExpectLinesWith({"CWatermarkPolicyXMLParser"},
                  m_told("no root", {IsWine() ? "Unknown error 0x80004003" : "Invalid pointer"}));
  if (!platform::kHasFaults) return;

  CWatermarkPolicyXMLParser::DeleteInstance();
  platform::SetFault("CoInitialize", 0, static_cast<DWORD>(E_FAIL));
  EXPECT_EQ(LoadDocument(), -101);
  ExpectLinesWith({"CWatermarkPolicyXMLParser::SetXmlData"}, m_told("no COM"));
  CWatermarkPolicyXMLParser::DeleteInstance();
  platform::ClearFaults();
  platform::SetFault("CoCreateInstance", 0, static_cast<DWORD>(E_FAIL));
  EXPECT_THROW(Reader(), _com_error) << "no XML service";
  platform::ClearFaults();
  ASSERT_EQ(LoadDocument(), 0);
  platform::SetFault("IXMLDOMNode::get_text", 2, static_cast<DWORD>(E_OUTOFMEMORY));
  EXPECT_EQ(Reader()->GetPolicyInfo(1, ids), -101);
  EXPECT_EQ(ids.size(), 2U) << "what was read before the exception stays";

  RecorderReset();
  for (const char* call : {"IXMLDOMNode::selectSingleNode", "IXMLDOMNode::selectNodes"})
    platform::SetFault(call, 0, platform::kThrows);
  EXPECT_EQ(LoadDocument(), -102);
  EXPECT_EQ(Reader()->GetPolicyInfo(1, ids), -102);
  EXPECT_TRUE(Reader()->GetPrinterScope(1).IsEmpty());
  EXPECT_TRUE(Reader()->GetWatermarkElement(L"E1", L"Kind").IsEmpty());
  platform::ClearFaults();
  platform::SetFault("IXMLDOMNode::get_attributes", 0, platform::kThrows);
  EXPECT_EQ(LoadDocument(), 0) << "the version is lost, no more";
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, m_told("anything else"));
}

}  // namespace
}  // namespace tests
