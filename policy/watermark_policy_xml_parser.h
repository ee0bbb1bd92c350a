#pragma once

// The reader of a policy document. One object, made by GetInstance and ended by DeleteInstance,
// lives for one pass on the pass's thread, under the system-wide mutex: it has no lock of its own.
// Order of use: GetInstance, SetXmlData, the queries, DeleteInstance; also DeleteInstance after a
// refused document. Nothing is cached, and each query is relative to the document's root,
// QuietMIMOSA/HLE.

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

  /// The object, made first if there is none; throws what the constructor throws.
  static CWatermarkPolicyXMLParser* GetInstance();
  static void DeleteInstance();

  // The operations below throw nothing: an exception is logged and ends in the outcome stated.

  /// Loads the document. 0; -1 `xml` is empty; -10 not well-formed; -11 no root; -101 a COM error;
  /// -102 another exception.
  int SetXmlData(CString xml);

  /// The value of an attribute, its name compared without regard to case; empty when it is missing.
  CString GetAttributeValue(IXMLDOMNodePtr node, const CString& name);

  /// Appends the element IDs of a policy in document order. 0; -12 the policy has none or does not
  /// exist; -101, -102 with those before the exception appended.
  int GetPolicyInfo(int policyId, std::vector<CString>& elementIds);

  /// The text of a policy's scope; empty when it is missing.
  CString GetPrinterScope(int policyId);

  /// The text of child `name` of the watermark element; empty when it is missing. The ID goes into
  /// the query as it stands.
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
