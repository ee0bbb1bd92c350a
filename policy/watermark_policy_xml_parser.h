#pragma once

// The reader of a policy document. One object serves one pass on the pass's thread, under the
// system-wide mutex, because it has no lock. Order of use: GetInstance, SetXmlData, the queries,
// DeleteInstance, which also follows a refused document. Nothing is cached. Each query is relative
// to the document's root, QuietMIMOSA/HLE.

#include <string>
#include <vector>

#include "platform/mfc.h"
#include "platform/owner.h"
#include "platform/xml.h"

/// Gives back one CoInitialize of this thread that went well.
void CloseCom(bool isOpen);

class CWatermarkPolicyXMLParser {
 public:
  /// Initialises COM on this thread and creates the empty document. Without COM there is no
  /// document; without the XML service a _com_error is thrown.
  CWatermarkPolicyXMLParser(const CString& outerName, const CString& innerName);
  CWatermarkPolicyXMLParser(const CWatermarkPolicyXMLParser&) = delete;
  CWatermarkPolicyXMLParser& operator=(const CWatermarkPolicyXMLParser&) = delete;

  /// Returns the object, which it makes if there is none. Throws like the constructor.
  static CWatermarkPolicyXMLParser* GetInstance();
  static void DeleteInstance();

  // The operations below throw nothing. They log an exception and return as stated.

  /// Loads the document. 0; -1 `xml` is empty; -10 not well-formed; -11 no root; -101 a COM error;
  /// -102 another exception.
  int SetXmlData(CString xml);

  /// Returns the value of an attribute, empty when it is missing. The case of `name` is ignored.
  CString GetAttributeValue(IXMLDOMNodePtr node, const CString& name);

  /// Appends the element IDs of a policy in document order. Returns 0; -12 when the policy has none
  /// or does not exist; -101 or -102 after an exception, with the IDs before it appended.
  int GetPolicyInfo(int policyId, std::vector<CString>& elementIds);

  /// Returns the text of a policy's scope, empty when it is missing.
  CString GetPrinterScope(int policyId);

  /// Returns the text of child `name` of the watermark element, empty when it is missing. The ID
  /// goes into the query as it stands.
  CString GetWatermarkElement(const CString& elementId, const CString& name);

 private:
  int Load(const CString& xml);
  int AppendElementIds(int policyId, std::vector<CString>& elementIds);
  CString SingleText(const CString& query);

  // Members are destroyed from last to first: the root, the document, then COM is closed.
  Owner<bool, CloseCom> m_bComIsOpen;
  IXMLDOMDocument2Ptr m_pDocument;
  IXMLDOMElementPtr m_pRoot;
  CString m_strOuterName;
  CString m_strInnerName;
  CString m_strVersion;
  LONG m_nParseErrorCode = 0;
  LONG m_nParseErrorLine = 0;
  CString m_strParseErrorReason;
};
