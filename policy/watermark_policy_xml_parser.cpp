#include "policy/watermark_policy_xml_parser.h"

#include <utility>

#include "logging/log.h"

namespace {

CWatermarkPolicyXMLParser* g_pInstance = nullptr;

constexpr wchar_t kSetXmlData[] = L"CWatermarkPolicyXMLParser::SetXmlData";
constexpr wchar_t kGetAttributeValue[] = L"CWatermarkPolicyXMLParser::GetAttributeValue";
constexpr wchar_t kGetPolicyInfo[] = L"CWatermarkPolicyXMLParser::GetPolicyInfo";
constexpr wchar_t kGetWatermarkElement[] = L"CWatermarkPolicyXMLParser::GetWatermarkElement";
constexpr wchar_t kGetPrinterScope[] = L"CWatermarkPolicyXMLParser::GetPrinterScope";

constexpr wchar_t kComErrorText[] = L"XMLファイル読込み時に例外が発生しました。%s ";
constexpr wchar_t kAttributeComErrorText[] =
    L"XMLファイル読込み時に例外が発生しました。%s  要素名=%s";
constexpr wchar_t kThrownText[] = L"XMLファイル書込み時に例外が発生しました。";

constexpr LogMessage kLoadComError = {2, 153200100, kSetXmlData, kComErrorText};
constexpr LogMessage kLoadThrown = {2, 153200110, kSetXmlData, kThrownText};
constexpr LogMessage kAttributeComError = {2, 153200120, kGetAttributeValue,
                                           kAttributeComErrorText};
constexpr LogMessage kAttributeThrown = {2, 153200130, kGetAttributeValue, kThrownText};
constexpr LogMessage kPolicyComError = {2, 153200140, kGetPolicyInfo, kComErrorText};
constexpr LogMessage kPolicyThrown = {2, 153200150, kGetPolicyInfo, kThrownText};
constexpr LogMessage kElementComError = {2, 153200160, kGetWatermarkElement, kComErrorText};
constexpr LogMessage kElementThrown = {2, 153200170, kGetWatermarkElement, kThrownText};
constexpr LogMessage kScopeComError = {2, 153200180, kGetPrinterScope, kComErrorText};
constexpr LogMessage kScopeThrown = {2, 153200190, kGetPrinterScope, kThrownText};

constexpr int kComError = -101;
constexpr int kThrown = -102;

IXMLDOMDocument2Ptr CreateDocument() {
  IXMLDOMDocument2Ptr document;
  IUnknownPtr object;
  if (FAILED(CoCreateInstance(CLSID_DOMDocument60, nullptr, CLSCTX_ALL, IID_IUnknown,
                              reinterpret_cast<void**>(&object))) ||
      FAILED(OleRun(object)))
    return document;
  object->QueryInterface(IID_IXMLDOMDocument2, reinterpret_cast<void**>(&document));
  return document;
}

/// A node that is no element makes an empty pointer, whose use raises E_POINTER.
CString TextOf(const IXMLDOMNodePtr& node) {
  const IXMLDOMElementPtr element = node;
  _bstr_t text;
  _com_util::CheckError(element->get_text(text.GetAddress()));
  return static_cast<const wchar_t*>(text);
}

}  // namespace

// Called only after a CoInitialize that went well. One that failed, as on a thread that the host
// runs in another mode, is not to be undone.
void CloseCom(bool /*isOpen*/) {
  CoUninitialize();
}

CWatermarkPolicyXMLParser::CWatermarkPolicyXMLParser(const CString& outerName,
                                                     const CString& innerName)
    : m_bComIsOpen(SUCCEEDED(CoInitialize(nullptr))) {
  if (!m_bComIsOpen) return;
  m_pDocument = CreateDocument();
  _com_util::CheckError(m_pDocument->put_async(VARIANT_FALSE));
  m_strOuterName = outerName;
  m_strInnerName = innerName;
}

CWatermarkPolicyXMLParser* CWatermarkPolicyXMLParser::GetInstance() {
  if (g_pInstance == nullptr) g_pInstance = new CWatermarkPolicyXMLParser(L"QuietMIMOSA", L"HLE");
  return g_pInstance;
}

void CWatermarkPolicyXMLParser::DeleteInstance() {
  delete std::exchange(g_pInstance, nullptr);
}

int CWatermarkPolicyXMLParser::SetXmlData(CString xml) {
  try {
    return Load(xml);
  } catch (const _com_error& error) {
    Log(kLoadComError, error.ErrorMessage());
    return kComError;
  } catch (...) {
    Log(kLoadThrown);
    return kThrown;
  }
}

int CWatermarkPolicyXMLParser::Load(const CString& xml) {
  if (xml.IsEmpty()) return -1;
  _com_util::CheckError(m_pDocument->put_async(VARIANT_FALSE));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  _com_util::CheckError(m_pDocument->loadXML(_bstr_t(static_cast<const wchar_t*>(xml)), &loaded));
  if (loaded == VARIANT_FALSE) {
    IXMLDOMParseErrorPtr error;
    _com_util::CheckError(m_pDocument->get_parseError(&error));
    _com_util::CheckError(error->get_errorCode(&m_nParseErrorCode));
    _com_util::CheckError(error->get_line(&m_nParseErrorLine));
    _bstr_t reason;
    _com_util::CheckError(error->get_reason(reason.GetAddress()));
    m_strParseErrorReason = static_cast<const wchar_t*>(reason);
    return -10;
  }
  IXMLDOMNodePtr root;
  const CString query = m_strOuterName + L"/" + m_strInnerName;
  _com_util::CheckError(
      m_pDocument->selectSingleNode(_bstr_t(static_cast<const wchar_t*>(query)), &root));
  m_pRoot = root;
  if (m_pRoot == nullptr) return -11;
  m_strVersion = GetAttributeValue(m_pRoot, L"Version");
  return 0;
}

// By value, so that the node stays alive during the call.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
CString CWatermarkPolicyXMLParser::GetAttributeValue(IXMLDOMNodePtr node, const CString& name) {
  try {
    IXMLDOMNamedNodeMapPtr attributes;
    _com_util::CheckError(node->get_attributes(&attributes));
    if (attributes == nullptr) return CString();
    LONG count = 0;
    _com_util::CheckError(attributes->get_length(&count));
    for (LONG index = 0; index < count; ++index) {
      IXMLDOMNodePtr attribute;
      _com_util::CheckError(attributes->get_item(index, &attribute));
      _bstr_t attributeName;
      _com_util::CheckError(attribute->get_nodeName(attributeName.GetAddress()));
      if (name.CompareNoCase(attributeName) != 0) continue;
      _variant_t value;
      _com_util::CheckError(attribute->get_nodeValue(&value));
      return static_cast<const wchar_t*>(_bstr_t(value));
    }
  } catch (const _com_error& error) {
    Log(kAttributeComError, error.ErrorMessage(), name);
  } catch (...) {
    Log(kAttributeThrown);
  }
  return CString();
}

int CWatermarkPolicyXMLParser::GetPolicyInfo(int policyId, std::vector<CString>& elementIds) {
  try {
    return AppendElementIds(policyId, elementIds);
  } catch (const _com_error& error) {
    Log(kPolicyComError, error.ErrorMessage());
    return kComError;
  } catch (...) {
    Log(kPolicyThrown);
    return kThrown;
  }
}

int CWatermarkPolicyXMLParser::AppendElementIds(int policyId, std::vector<CString>& elementIds) {
  CString query;
  query.Format(L"./Watermark/PolicyInfos/PolicyInfo[@ID=\"%d\"]/ElementIDs/ID", policyId);
  IXMLDOMNodeListPtr nodes;
  _com_util::CheckError(m_pRoot->selectNodes(_bstr_t(static_cast<const wchar_t*>(query)), &nodes));
  LONG count = 0;
  if (nodes != nullptr) _com_util::CheckError(nodes->get_length(&count));
  if (count < 1) return -12;
  for (LONG index = 0; index < count; ++index) {
    IXMLDOMNodePtr node;
    _com_util::CheckError(nodes->get_item(index, &node));
    elementIds.push_back(TextOf(node));
  }
  return 0;
}

CString CWatermarkPolicyXMLParser::GetPrinterScope(int policyId) {
  try {
    CString query;
    query.Format(L"./Watermark/PolicyInfos/PolicyInfo[@ID=\"%d\"]/PrinterScope", policyId);
    return SingleText(query);
  } catch (const _com_error& error) {
    Log(kScopeComError, error.ErrorMessage());
  } catch (...) {
    Log(kScopeThrown);
  }
  return CString();
}

CString CWatermarkPolicyXMLParser::GetWatermarkElement(const CString& elementId,
                                                       const CString& name) {
  try {
    CString query;
    query.Format(L"./Watermark/Elements/Element[@ID=\"%s\"]", elementId.GetString());
    return SingleText(query + L"/" + name);
  } catch (const _com_error& error) {
    Log(kElementComError, error.ErrorMessage());
  } catch (...) {
    Log(kElementThrown);
  }
  return CString();
}

CString CWatermarkPolicyXMLParser::SingleText(const CString& query) {
  IXMLDOMNodePtr node;
  _com_util::CheckError(
      m_pRoot->selectSingleNode(_bstr_t(static_cast<const wchar_t*>(query)), &node));
  return node == nullptr ? CString() : TextOf(node);
}
