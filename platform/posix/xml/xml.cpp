#include "platform/xml.h"

#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "platform/faults.h"
#include "platform/posix/xml/xml_document.h"
#include "platform/posix/xml/xml_query.h"

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
    if (object == nullptr) return E_POINTER;
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
  virtual bool Has(const IID& iid) const = 0;

  ULONG m_references = 1;
};

/// Does one operation: its fault, its exceptions and a missing out-parameter become results.
template <typename Out, typename Action>
HRESULT Do(const char* operation, Out* out, Action action) {
  if (const auto fault = TakeFault(operation)) return static_cast<HRESULT>(*fault);
  if (out == nullptr) return E_INVALIDARG;
  try {
    return action(*out);
  } catch (const xpath::QueryError&) {
    return E_FAIL;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

BSTR NewText(std::wstring_view text) {
  const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (copy == nullptr) throw std::bad_alloc();
  return copy;
}

std::wstring_view View(BSTR text) {
  return {text, SysStringLen(text)};
}

IXMLDOMNode* NewNode(const Content& content, NodeId id);

class NodeList final : public Object<IXMLDOMNodeList> {
 public:
  NodeList(Content content, xpath::NodeSet nodes)
      : m_content(std::move(content)), m_nodes(std::move(nodes)) {}

  HRESULT get_item(LONG index, IXMLDOMNode** item) override {
    return Do("IXMLDOMNodeList::get_item", item, [&](IXMLDOMNode*& out) {
      out = nullptr;
      if (index < 0 || static_cast<std::size_t>(index) >= m_nodes.size()) return S_FALSE;
      out = NewNode(m_content, m_nodes[static_cast<std::size_t>(index)]);
      return S_OK;
    });
  }

  HRESULT get_length(LONG* length) override {
    return Do("IXMLDOMNodeList::get_length", length, [&](LONG& out) {
      out = static_cast<LONG>(m_nodes.size());
      return S_OK;
    });
  }

 private:
  bool Has(const IID& iid) const override { return iid == IID_IXMLDOMNodeList; }

  const Content m_content;
  const xpath::NodeSet m_nodes;
};

/// The attributes of an element are the nodes behind it, before its first child.
class AttributeMap final : public Object<IXMLDOMNamedNodeMap> {
 public:
  AttributeMap(Content content, NodeId element)
      : m_content(std::move(content)),
        m_begin(element + 1),
        m_count(m_content->Tree()[element].firstChild - m_begin) {}

  HRESULT get_item(LONG index, IXMLDOMNode** item) override {
    return Do("IXMLDOMNamedNodeMap::get_item", item, [&](IXMLDOMNode*& out) {
      out = nullptr;
      if (index < 0 || static_cast<NodeId>(index) >= m_count) return S_FALSE;
      out = NewNode(m_content, m_begin + static_cast<NodeId>(index));
      return S_OK;
    });
  }

  HRESULT get_length(LONG* length) override {
    return Do("IXMLDOMNamedNodeMap::get_length", length, [&](LONG& out) {
      out = static_cast<LONG>(m_count);
      return S_OK;
    });
  }

 private:
  bool Has(const IID& iid) const override { return iid == IID_IXMLDOMNamedNodeMap; }

  const Content m_content;
  const NodeId m_begin;
  const NodeId m_count;
};

std::wstring_view NodeName(const XmlTree& tree, NodeId id) {
  switch (tree[id].kind) {
    case NodeKind::kDocument:
      return L"#document";
    case NodeKind::kText:
      return L"#text";
    case NodeKind::kSection:
      return L"#cdata-section";
    case NodeKind::kComment:
      return L"#comment";
    default:
      return tree.Name(id).qualified;
  }
}

/// The operations of a node; IXMLDOMDocument2's are those of its document node.
template <typename Interface>
class NodeObject : public Object<Interface> {
 public:
  NodeObject(Content content, NodeId id) : m_content(std::move(content)), m_id(id) {}

  HRESULT get_nodeName(BSTR* name) override {
    return Do("IXMLDOMNode::get_nodeName", name, [&](BSTR& out) {
      out = NewText(NodeName(Tree(), m_id));
      return S_OK;
    });
  }

  HRESULT get_nodeValue(VARIANT* value) override {
    return Do("IXMLDOMNode::get_nodeValue", value, [&](VARIANT& out) {
      out = {VT_NULL, nullptr};
      if (Kind() == NodeKind::kElement || Kind() == NodeKind::kDocument) return S_FALSE;
      out = {VT_BSTR, NewText(Tree().Text(m_id))};
      return S_OK;
    });
  }

  HRESULT get_attributes(IXMLDOMNamedNodeMap** attributes) override {
    return Do("IXMLDOMNode::get_attributes", attributes, [&](IXMLDOMNamedNodeMap*& out) {
      out = nullptr;
      if (Kind() != NodeKind::kElement) return S_FALSE;
      out = new AttributeMap(m_content, m_id);
      return S_OK;
    });
  }

  HRESULT get_text(BSTR* text) override {
    return Do("IXMLDOMNode::get_text", text, [&](BSTR& out) {
      out = NewText(TextOf(Tree(), m_id));
      return S_OK;
    });
  }

  HRESULT selectNodes(BSTR query, IXMLDOMNodeList** nodes) override {
    return Do("IXMLDOMNode::selectNodes", nodes, [&](IXMLDOMNodeList*& out) {
      out = nullptr;
      if (query == nullptr) return E_INVALIDARG;
      out = new NodeList(m_content, m_content->Select(m_id, View(query)));
      return S_OK;
    });
  }

  HRESULT selectSingleNode(BSTR query, IXMLDOMNode** node) override {
    return Do("IXMLDOMNode::selectSingleNode", node, [&](IXMLDOMNode*& out) {
      out = nullptr;
      if (query == nullptr) return E_INVALIDARG;
      const NodeId found = m_content->SelectFirst(m_id, View(query));
      if (found == kNoNode) return S_FALSE;
      out = NewNode(m_content, found);
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
    return Do("IXMLDOMParseError::get_errorCode", code, [&](LONG& out) {
      out = m_error.code;
      return Result();
    });
  }

  HRESULT get_reason(BSTR* reason) override {
    return Do("IXMLDOMParseError::get_reason", reason, [&](BSTR& out) {
      out = NewText(m_error.reason);
      return Result();
    });
  }

  HRESULT get_line(LONG* line) override {
    return Do("IXMLDOMParseError::get_line", line, [&](LONG& out) {
      out = m_error.line;
      return Result();
    });
  }

 private:
  bool Has(const IID& iid) const override { return iid == IID_IXMLDOMParseError; }
  HRESULT Result() const { return m_error.code == 0 ? S_FALSE : S_OK; }

  const XmlError m_error;
};

class Document final : public NodeObject<IXMLDOMDocument2> {
 public:
  Document() : NodeObject(std::make_shared<XmlContent>(XmlTree()), kDocumentNode) {}

  HRESULT put_async(VARIANT_BOOL) override {
    const auto fault = TakeFault("IXMLDOMDocument2::put_async");
    return fault ? static_cast<HRESULT>(*fault) : S_OK;
  }

  HRESULT loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) override {
    VARIANT_BOOL unread = VARIANT_FALSE;
    return Do("IXMLDOMDocument2::loadXML", isSuccessful == nullptr ? &unread : isSuccessful,
              [&](VARIANT_BOOL& out) {
                out = VARIANT_FALSE;
                m_content = std::make_shared<XmlContent>(XmlTree());
                m_content = std::make_shared<XmlContent>(ParseXml(View(xml), m_error));
                if (m_error.code != 0) return S_FALSE;
                out = VARIANT_TRUE;
                return S_OK;
              });
  }

  HRESULT get_parseError(IXMLDOMParseError** error) override {
    return Do("IXMLDOMDocument2::get_parseError", error, [&](IXMLDOMParseError*& out) {
      out = new ParseError(m_error);
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
