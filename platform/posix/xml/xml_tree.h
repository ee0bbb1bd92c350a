#pragma once

// The content of an XML document: all its nodes in document order in one array, so that a node's
// descendants are the range behind it. White space that MSXML drops while it loads is not there;
// marks tell where it was.

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace platform {

using NodeId = std::uint32_t;
constexpr NodeId kDocumentNode = 0;
constexpr NodeId kNoNode = static_cast<NodeId>(-1);
constexpr std::uint32_t kNoName = static_cast<std::uint32_t>(-1);

enum class NodeKind : std::uint8_t {
  kDocument,
  kElement,
  kDeclaration,  // a namespace's
  kAttribute,
  kText,
  kSection,  // CDATA
  kComment,
  kInstruction,
};

struct XmlNode {
  NodeId parent;
  NodeId firstChild;    // one behind the attributes; `end` without a child
  NodeId end;           // one behind the last descendant
  std::uint32_t name;   // of elements, attributes, declarations and instructions
  std::uint32_t begin;  // where its own text begins,
  std::uint32_t size;   // and how long it is
  NodeKind kind;
  bool keepsSpace = false;     // xml:space="preserve" holds here
  bool isSpaceInside = false;  // white space was dropped before the first child,
  bool isSpaceBehind = false;  // or behind this node
};

/// A qualified name and the namespace that it is in.
struct XmlName {
  std::wstring qualified;
  std::wstring uri;
  std::uint32_t prefixSize;  // with the colon

  std::wstring_view Local() const { return std::wstring_view(qualified).substr(prefixSize); }
  std::wstring_view Prefix() const {
    return std::wstring_view(qualified).substr(0, prefixSize == 0 ? 0 : prefixSize - 1);
  }
};

struct XmlError {
  std::int32_t code = 0;  // MSXML's; 0: none
  std::int32_t line = 0;
  std::wstring reason;
};

class XmlTree {
 public:
  /// A document node alone.
  XmlTree();
  XmlTree(XmlTree&&) noexcept = default;
  XmlTree& operator=(XmlTree&&) noexcept = default;

  const XmlNode& operator[](NodeId id) const { return m_nodes[id]; }
  NodeId Size() const { return static_cast<NodeId>(m_nodes.size()); }

  const XmlName& Name(NodeId id) const { return m_names[m_nodes[id].name]; }
  /// The number of an unqualified name without a namespace; kNoName if the document has none such.
  std::uint32_t FindName(std::wstring_view name) const;

  /// The node's own text: that of an attribute, declaration, text, section, comment, instruction.
  std::wstring_view Text(NodeId id) const {
    return std::wstring_view(m_texts).substr(m_nodes[id].begin, m_nodes[id].size);
  }

  /// Attributes and declarations lie between an element and its first child.
  bool IsAttribute(NodeId id) const {
    return m_nodes[id].kind == NodeKind::kAttribute || m_nodes[id].kind == NodeKind::kDeclaration;
  }
  /// Calls `visit` with each child in order.
  template <typename Visit>
  void ForEachChild(NodeId id, Visit visit) const {
    for (NodeId child = m_nodes[id].firstChild; child < m_nodes[id].end; child = m_nodes[child].end)
      visit(child);
  }

 private:
  friend class XmlTreeBuilder;

  std::vector<XmlNode> m_nodes;
  std::wstring m_texts;
  std::deque<XmlName> m_names;  // which stay where they are: m_plainNames looks at them
  std::unordered_map<std::wstring_view, std::uint32_t> m_plainNames;
};

/// Reads XML 1.0 with namespaces as MSXML 6.0 does; without content and with `error` set when it is
/// refused. Throws std::bad_alloc.
XmlTree ParseXml(std::wstring_view xml, XmlError& error);

/// What MSXML's `text` gives for a node while white space is not preserved.
std::wstring TextOf(const XmlTree& tree, NodeId id);

}  // namespace platform
