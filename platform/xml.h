#pragma once

// The XML document service, MSXML 6.0, with its typed smart pointers; objects come from
// CoCreateInstance (com.h). Names and texts are wide; lines count from 1; positions in lists from
// 0.

#include "platform/com.h"

#ifdef _WIN32

#include <msxml2.h>

_COM_SMARTPTR_TYPEDEF(IXMLDOMNode, IID_IXMLDOMNode);
_COM_SMARTPTR_TYPEDEF(IXMLDOMNodeList, IID_IXMLDOMNodeList);
_COM_SMARTPTR_TYPEDEF(IXMLDOMNamedNodeMap, IID_IXMLDOMNamedNodeMap);
_COM_SMARTPTR_TYPEDEF(IXMLDOMElement, IID_IXMLDOMElement);
_COM_SMARTPTR_TYPEDEF(IXMLDOMParseError, IID_IXMLDOMParseError);
_COM_SMARTPTR_TYPEDEF(IXMLDOMDocument2, IID_IXMLDOMDocument2);

#else

struct IXMLDOMNodeList;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMParseError;

// A node is the document, an element or an attribute. It keeps its document's content alive, also
// when the document loads another.

struct IXMLDOMNode : IUnknown {
  /// The qualified name; "#document" for the document.
  virtual HRESULT get_nodeName(BSTR* name) = 0;

  /// The text of an attribute; VT_NULL and S_FALSE for the others.
  virtual HRESULT get_nodeValue(VARIANT* value) = 0;

  /// An element's attributes, namespace declarations behind the others; null and S_FALSE for the
  /// others.
  virtual HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) = 0;

  /// The text of the node and of the elements below it, without comments and processing
  /// instructions. Outside of xml:space="preserve" it loses the white space at both ends that is
  /// not part of a CDATA section, and white space alone between two parts of it is one blank.
  virtual HRESULT get_text(BSTR* text) = 0;

  /// The elements that the query gives, in document order. Of XPath 1.0 it may use this: `./`,
  /// which may be left out, and steps parted by `/`, each a name or NAME[@NAME="TEXT"] of ASCII
  /// letters. E_FAIL for any other query, and for one that takes too long to answer.
  virtual HRESULT selectNodes(BSTR query, IXMLDOMNodeList** nodes) = 0;

  /// The first of them; null and S_FALSE if there is none.
  virtual HRESULT selectSingleNode(BSTR query, IXMLDOMNode** node) = 0;

 protected:
  ~IXMLDOMNode() = default;
};

struct IXMLDOMElement : IXMLDOMNode {
 protected:
  ~IXMLDOMElement() = default;
};

struct IXMLDOMDocument2 : IXMLDOMNode {
  /// Loads are always synchronous.
  virtual HRESULT put_async(VARIANT_BOOL isAsync) = 0;

  /// Replaces the content by that of `xml`, well-formed XML 1.0 with namespaces; an encoding named
  /// in it has no effect. VARIANT_TRUE and S_OK; VARIANT_FALSE, S_FALSE and no content otherwise,
  /// also for a document type declaration or elements more than 256 deep. Linux alone also refuses
  /// a text of more than 16 MiB of UTF-8 and a document of more than 1,000,000 elements, attributes
  /// and texts.
  virtual HRESULT loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) = 0;

  /// Returns the error of the last text loaded.
  virtual HRESULT get_parseError(IXMLDOMParseError** error) = 0;

 protected:
  ~IXMLDOMDocument2() = default;
};

/// Without an error: code 0, line 0, an empty reason, and S_FALSE.
struct IXMLDOMParseError : IUnknown {
  virtual HRESULT get_errorCode(LONG* code) = 0;
  virtual HRESULT get_reason(BSTR* reason) = 0;
  virtual HRESULT get_line(LONG* line) = 0;

 protected:
  ~IXMLDOMParseError() = default;
};

struct IXMLDOMNodeList : IUnknown {
  /// Null and S_FALSE for an index out of range.
  virtual HRESULT get_item(LONG index, IXMLDOMNode** item) = 0;
  virtual HRESULT get_length(LONG* length) = 0;

 protected:
  ~IXMLDOMNodeList() = default;
};

struct IXMLDOMNamedNodeMap : IUnknown {
  /// Null and S_FALSE for an index out of range.
  virtual HRESULT get_item(LONG index, IXMLDOMNode** item) = 0;
  virtual HRESULT get_length(LONG* length) = 0;

 protected:
  ~IXMLDOMNamedNodeMap() = default;
};

inline constexpr IID IID_IXMLDOMNode = {
    0x2933BF80, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
inline constexpr IID IID_IXMLDOMNodeList = {
    0x2933BF82, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
inline constexpr IID IID_IXMLDOMNamedNodeMap = {
    0x2933BF83, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
inline constexpr IID IID_IXMLDOMElement = {
    0x2933BF86, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
inline constexpr IID IID_IXMLDOMDocument2 = {
    0x2933BF95, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
inline constexpr IID IID_IXMLDOMParseError = {
    0x3EFAA426, 0x272F, 0x11D2, {0x83, 0x6F, 0x00, 0x00, 0xF8, 0x7A, 0x77, 0x82}};

_COM_SMARTPTR_TYPEDEF(IXMLDOMNode, IID_IXMLDOMNode);
_COM_SMARTPTR_TYPEDEF(IXMLDOMNodeList, IID_IXMLDOMNodeList);
_COM_SMARTPTR_TYPEDEF(IXMLDOMNamedNodeMap, IID_IXMLDOMNamedNodeMap);
_COM_SMARTPTR_TYPEDEF(IXMLDOMElement, IID_IXMLDOMElement);
_COM_SMARTPTR_TYPEDEF(IXMLDOMParseError, IID_IXMLDOMParseError);
_COM_SMARTPTR_TYPEDEF(IXMLDOMDocument2, IID_IXMLDOMDocument2);

#endif

/// The class of MSXML 6.0's document; its IXMLDOMDocument2 starts without content.
inline constexpr CLSID CLSID_DOMDocument60 = {
    0x88D96A05, 0xF192, 0x11D4, {0xA6, 0x5F, 0x00, 0x40, 0x96, 0x32, 0x51, 0xE5}};
