#include "platform/xml.h"

#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <string_view>

#include "platform/faults.h"
#include "platform/posix/xml/xml_document.h"
#include "platform/posix/xml/xml_query.h"
#include "platform/utf.h"

namespace platform {

namespace {

using Content = std::shared_ptr<XmlContent>;

/// An object of one interface. It starts with one reference.
template <typename Interface>
class Object : public Interface {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  HRESULT QueryInterface(const IID& iid, void** object) override {
    const bool has = iid == IID_IUnknown || Has(iid);
    *object = has ? static_cast<Interface*>(this) : nullptr;
    if (has) AddRef();
    return has ? S_OK : E_NOINTERFACE;
  }
  ULONG AddRef() override { return ++m_references; }
  ULONG Release() override {
    const ULONG left = --m_references;
    if (left == 0) delete this;
    return left;
  }

 private:
  virtual bool Has(const IID&) const { return false; }

  ULONG m_references = 1;
};

/// Turns the exception of an operation into its result.
template <typename Action>
HRESULT Do(Action action) {
  try {
    return action();
  } catch (const QueryError&) {
    return E_FAIL;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

/// The same for an operation that can be made to fail.
template <typename Action>
HRESULT Do(const char* operation, Action action) {
  if (const auto fault = TakeFault(operation)) return static_cast<HRESULT>(*fault);
  return Do(action);
}

HRESULT Give(std::wstring_view text, BSTR* out) {
  *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *out == nullptr ? E_OUTOFMEMORY : S_OK;
}

std::wstring_view View(BSTR text) {
  return {text, SysStringLen(text)};
}

IXMLDOMNode* NewNode(const Content& content, NodeId id);

/// The elements that a query gave, or the attributes of an element.
template <typename Interface>
class List final : public Object<Interface> {
 public:
  List(Content content, std::vector<NodeId> nodes)
      : m_content(std::move(content)), m_nodes(std::move(nodes)) {}

  HRESULT get_item(LONG index, IXMLDOMNode** item) override {
    return Do([&] {
      *item = nullptr;
      if (index < 0 || static_cast<std::size_t>(index) >= m_nodes.size()) return S_FALSE;
      *item = NewNode(m_content, m_nodes[static_cast<std::size_t>(index)]);
      return S_OK;
    });
  }

  HRESULT get_length(LONG* length) override {
    *length = static_cast<LONG>(m_nodes.size());
    return S_OK;
  }

 private:
  const Content m_content;
  const std::vector<NodeId> m_nodes;
};

/// The operations of a node; IXMLDOMDocument2's are those of its document node.
template <typename Interface>
class NodeObject : public Object<Interface> {
 public:
  NodeObject(Content content, NodeId id) : m_content(std::move(content)), m_id(id) {}

  HRESULT get_nodeName(BSTR* name) override {
    return Do([&] {
      if (Kind() == NodeKind::kDocument) return Give(L"#document", name);
      return Give(FromUtf8(reinterpret_cast<const char*>(Tree()[m_id].name)), name);
    });
  }

  HRESULT get_nodeValue(VARIANT* value) override {
    return Do([&] {
      *value = {VT_NULL, nullptr};
      if (Kind() != NodeKind::kAttribute) return S_FALSE;
      const HRESULT result = Give(TextOf(Tree(), m_id), &value->bstrVal);
      if (result == S_OK) value->vt = VT_BSTR;
      return result;
    });
  }

  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override {
    return Do("IXMLDOMNode::get_attributes", [&] {
      *attributes = nullptr;
      if (Kind() != NodeKind::kElement) return S_FALSE;
      // They are the nodes behind it, before its first child.
      std::vector<NodeId> nodes(Tree()[m_id].firstChild - (m_id + 1));
      std::iota(nodes.begin(), nodes.end(), m_id + 1);
      *attributes = new List<IXMLDOMNamedNodeMap>(m_content, std::move(nodes));
      return S_OK;
    });
  }

  HRESULT get_text(BSTR* text) override {
    return Do("IXMLDOMNode::get_text", [&] { return Give(TextOf(Tree(), m_id), text); });
  }

  HRESULT selectNodes(BSTR query, IXMLDOMNodeList** nodes) override {
    return Do("IXMLDOMNode::selectNodes", [&] {
      *nodes = nullptr;
      constexpr auto kAll = static_cast<std::size_t>(-1);
      *nodes = new List<IXMLDOMNodeList>(m_content, m_content->Select(m_id, View(query), kAll));
      return S_OK;
    });
  }

  HRESULT selectSingleNode(BSTR query, IXMLDOMNode** node) override {
    return Do("IXMLDOMNode::selectSingleNode", [&] {
      *node = nullptr;
      const std::vector<NodeId> found = m_content->Select(m_id, View(query), 1);
      if (found.empty()) return S_FALSE;
      *node = NewNode(m_content, found.front());
      return S_OK;
    });
  }

 protected:
  const XmlTree& Tree() const { return m_content->Tree(); }
  NodeKind Kind() const { return Tree()[m_id].kind; }

  Content m_content;

 private:
  const NodeId m_id;
};

class Node final : public NodeObject<IXMLDOMElement> {
 public:
  using NodeObject::NodeObject;

 private:
  bool Has(const IID& iid) const override {
    return iid == IID_IXMLDOMNode || (iid == IID_IXMLDOMElement && Kind() == NodeKind::kElement);
  }
};

IXMLDOMNode* NewNode(const Content& content, NodeId id) {
  return new Node(content, id);
}

class ParseError final : public Object<IXMLDOMParseError> {
 public:
  explicit ParseError(XmlError error) : m_error(std::move(error)) {}

  HRESULT get_errorCode(LONG* code) override {
    *code = m_error.line == 0 ? 0 : E_FAIL;
    return Result();
  }
  HRESULT get_reason(BSTR* reason) override {
    const HRESULT result = Give(m_error.reason, reason);
    return FAILED(result) ? result : Result();
  }
  HRESULT get_line(LONG* line) override {
    *line = m_error.line;
    return Result();
  }

 private:
  HRESULT Result() const { return m_error.line == 0 ? S_FALSE : S_OK; }

  const XmlError m_error;
};

class Document final : public NodeObject<IXMLDOMDocument2> {
 public:
  Document() : NodeObject(std::make_shared<XmlContent>(XmlTree()), kDocumentNode) {}

  HRESULT put_async(VARIANT_BOOL) override { return S_OK; }

  HRESULT loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) override {
    return Do([&] {
      *isSuccessful = VARIANT_FALSE;
      m_content = std::make_shared<XmlContent>(XmlTree());
      m_content = std::make_shared<XmlContent>(ParseXml(View(xml), m_error));
      if (m_error.line != 0) return S_FALSE;
      *isSuccessful = VARIANT_TRUE;
      return S_OK;
    });
  }

  HRESULT get_parseError(IXMLDOMParseError** error) override {
    return Do([&] {
      *error = new ParseError(m_error);
      return S_OK;
    });
  }

 private:
  bool Has(const IID& iid) const override {
    return iid == IID_IXMLDOMDocument2 || iid == IID_IXMLDOMNode;
  }

  XmlError m_error;
};

}  // namespace

IUnknown* NewXmlDocument() {
  return new Document();
}

}  // namespace platform
