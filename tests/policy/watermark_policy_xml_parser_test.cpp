#include "policy/watermark_policy_xml_parser.h"

#include <gtest/gtest.h>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

/// The object of one pass.
class Reader {
 public:
  ~Reader() { CWatermarkPolicyXMLParser::DeleteInstance(); }
  CWatermarkPolicyXMLParser* operator->() const { return CWatermarkPolicyXMLParser::GetInstance(); }
};

std::string Utf8(const CString& text) {
  return platform::ToUtf8(std::wstring_view(text.GetString()));
}

constexpr wchar_t kDocument[] =
    LR"(<?xml version="1.0" encoding="utf-8"?>
<QuietMIMOSA><Other/><HLE version="7">
 <Watermark>
  <PolicyInfos>
   <PolicyInfo ID="01"><PrinterScope>9</PrinterScope></PolicyInfo>
   <PolicyInfo ID="1"><ElementIDs><ID> E2 </ID><ID>E1</ID><!-- x --><ID>E2</ID><ID/></ElementIDs>
    <PrinterScope> 2 </PrinterScope><PrinterScope>3</PrinterScope></PolicyInfo>
   <PolicyInfo ID="-2147483648"><ElementIDs><ID>最小</ID></ElementIDs></PolicyInfo>
  </PolicyInfos>
  <Elements>
   <Element ID="E1"><Kind>1</Kind><Text>
     &#x793E;<![CDATA[ <外秘> ]]>{WinUser}<!-- not this --><b>!</b> </Text><name>x</name></Element>
   <Element ID="E1"><Kind>2</Kind><Name>second</Name></Element>
   <Element ID="E']/*"><Kind>3</Kind></Element>
  </Elements>
 </Watermark></HLE><HLE><Watermark/></HLE></QuietMIMOSA>)";

TEST(PolicyReader, AnswersFromTheDocument) {
  TestMachine machine;
  Reader reader;
  ASSERT_EQ(reader->SetXmlData(kDocument), 0);

  const auto ids = [&reader](int policy, int result) {
    std::vector<CString> list;
    list.push_back(L"kept");
    EXPECT_EQ(reader->GetPolicyInfo(policy, list), result) << policy;
    std::string joined;
    for (const CString& id : list) joined += Utf8(id) + "|";
    return joined;
  };
  EXPECT_EQ(ids(1, 0), "kept|E2|E1|E2||");
  EXPECT_EQ(ids(-2147483647 - 1, 0), "kept|最小|");
  EXPECT_EQ(ids(2, -12), "kept|");

  EXPECT_EQ(Utf8(reader->GetPrinterScope(1)), "2");
  EXPECT_EQ(Utf8(reader->GetPrinterScope(-2147483647 - 1)), "");
  EXPECT_EQ(Utf8(reader->GetPrinterScope(5)), "");

  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"E1", L"Kind")), "1");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"E1", L"Text")), "社 <外秘> {WinUser}!");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"E1", L"Name")), "second") << "first match";
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"E']/*", L"Kind")), "3");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"e1", L"Kind")), "");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"", L"Kind")), "");
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, "");

  // A quote in an ID makes another query of it, or none at all.
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"\" or \"\"=\"", L"Kind")), "1");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"\"", L"Kind")), "");
  EXPECT_EQ(Utf8(reader->GetWatermarkElement(L"\"]|//*[\"", L"Kind[")), "");
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, R"(
2 153200160 CWatermarkPolicyXMLParser::GetWatermarkElement "XMLファイル読込み時に例外が発生しました。*
2 153200160 CWatermarkPolicyXMLParser::GetWatermarkElement "XMLファイル読込み時に例外が発生しました。*
)");
}

TEST(PolicyReader, TellsWhatIsWrongWithADocument) {
  TestMachine machine;
  const std::wstring deep(255, L'x');
  const auto nested = [](int depth) {
    std::wstring text = L"<QuietMIMOSA><HLE>";
    for (int i = 2; i < depth; ++i) text += L"<a>";
    for (int i = 2; i < depth; ++i) text += L"</a>";
    return text + L"</HLE></QuietMIMOSA>";
  };
  const struct {
    std::wstring text;
    int result;
    bool isLimitOfWine = false;  // It takes what Windows refuses and refuses encodings.
  } kCases[] = {
      {L"", -1},
      {L" ", -10},
      {L"\xFEFF<QuietMIMOSA><HLE/></QuietMIMOSA>", 0},
      {L"<QuietMIMOSA><HLE></QuietMIMOSA>", -10},
      {L"<QuietMIMOSA><HLE/></QuietMIMOSA>x", -10},
      {L"<?xml version='1.0' encoding='Shift_JIS'?><QuietMIMOSA><HLE/></QuietMIMOSA>", 0, true},
      {L"<!DOCTYPE QuietMIMOSA><QuietMIMOSA><HLE/></QuietMIMOSA>", -10, true},
      {L"<!DOCTYPE a [<!ENTITY b SYSTEM \"file:///etc/passwd\">]><QuietMIMOSA><HLE/></QuietMIMOSA>",
       -10, true},
      {L"<QuietMIMOSA><HLE/>&undefined;</QuietMIMOSA>", -10},
      {L"<QuietMIMOSA><hle/></QuietMIMOSA>", -11},
      {L"<Other><QuietMIMOSA><HLE/></QuietMIMOSA></Other>", -11},
      {L"<QuietMIMOSA xmlns='urn:x'><HLE/></QuietMIMOSA>", -11},
      {L"<QuietMIMOSA><HLE/></QuietMIMOSA>", 0},
      {nested(256), 0},
      {nested(257), -10, true},
  };
  for (const auto& one : kCases) {
    if (one.isLimitOfWine && IsWine()) continue;
    Reader reader;
    EXPECT_EQ(reader->SetXmlData(one.text.c_str()), one.result) << platform::ToUtf8(one.text);
    EXPECT_EQ(reader->SetXmlData(L"<QuietMIMOSA><HLE/></QuietMIMOSA>"), 0) << "the next is new";
  }
  ExpectLinesWith({"CWatermarkPolicyXMLParser"}, "");
}

// Each query of a reader that has no root, or whose service fails, ends in its line and its
// outcome.
TEST(PolicyReader, ContainsEveryException) {
  TestMachine machine;
  Reader reader;
  std::vector<CString> ids;
  EXPECT_EQ(reader->GetPolicyInfo(1, ids), -101);
  EXPECT_TRUE(reader->GetPrinterScope(1).IsEmpty());
  EXPECT_TRUE(reader->GetWatermarkElement(L"E1", L"Kind").IsEmpty());
  EXPECT_TRUE(reader->GetAttributeValue(IXMLDOMNodePtr(), L"Version").IsEmpty());
  ExpectLinesWith({"CWatermarkPolicyXMLParser"},
                  Fill(R"(
2 153200140 CWatermarkPolicyXMLParser::GetPolicyInfo "XMLファイル読込み時に例外が発生しました。$1*
2 153200180 CWatermarkPolicyXMLParser::GetPrinterScope "XMLファイル読込み時に例外が発生しました。$1*
2 153200160 CWatermarkPolicyXMLParser::GetWatermarkElement "XMLファイル読込み時に例外が発生しました。$1*
2 153200120 CWatermarkPolicyXMLParser::GetAttributeValue "XMLファイル読込み時に例外が発生しました。$1*
)",
                       {IsWine() ? "Unknown error 0x80004003" : "Invalid pointer"}));
  if (!platform::kHasFaults) return;

  CWatermarkPolicyXMLParser::DeleteInstance();
  platform::SetFault("CoInitialize", 0, static_cast<DWORD>(E_FAIL));
  EXPECT_EQ(reader->SetXmlData(kDocument), -101) << "no COM, no document";
  CWatermarkPolicyXMLParser::DeleteInstance();
  platform::ClearFaults();
  platform::SetFault("CoCreateInstance", 0, static_cast<DWORD>(E_FAIL));
  EXPECT_THROW(CWatermarkPolicyXMLParser::GetInstance(), _com_error) << "no XML service";
  platform::ClearFaults();
  ASSERT_EQ(reader->SetXmlData(kDocument), 0);
  platform::SetFault("IXMLDOMNode::get_text", 2, static_cast<DWORD>(E_OUTOFMEMORY));
  EXPECT_EQ(reader->GetPolicyInfo(1, ids), -101);
  EXPECT_EQ(ids.size(), 2U) << "what was read before the exception stays";
}

}  // namespace
}  // namespace tests
