// The document reader: a document, and behind it an ID and a name to ask for.

#include "fuzz/machine.h"
#include "policy/watermark_policy_xml_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Parts document = fuzz::Split(fuzz::Text(data, size));
  const fuzz::Parts query = fuzz::Split(document.second);
  CWatermarkPolicyXMLParser* const reader = CWatermarkPolicyXMLParser::GetInstance();
  if (reader->SetXmlData(fuzz::Wide(document.first).c_str()) == 0) {
    std::vector<CString> ids;
    reader->GetPolicyInfo(1, ids);
    reader->GetPrinterScope(1);
    ids.push_back(fuzz::Wide(query.first).c_str());
    const CString name = fuzz::Wide(query.second).c_str();
    for (const CString& id : ids) {
      reader->GetWatermarkElement(id, L"Text");
      reader->GetWatermarkElement(id, name);
    }
  }
  CWatermarkPolicyXMLParser::DeleteInstance();
  return 0;
}
