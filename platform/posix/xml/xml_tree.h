#pragma once

// The content of an XML document: its elements, attributes and texts in document order in one
// array, so that a node's descendants are the range behind it. Names and texts are UTF-8. Comments
// and processing instructions are not kept, nor is the white space that MSXML drops while it loads;
// marks keep its places.

#include <libxml/parser.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/owner.h"

namespace platform {

using NodeId = std::uint32_t;
constexpr NodeId kDocumentNode = 0;
constexpr NodeId kNoNode = static_cast<NodeId>(-1);

/// A name in the parser's dictionary. Equal names have one address. Null for a name that does not
/// occur in the document.
using XmlName = const xmlChar*;

enum class NodeKind : std::uint8_t { kDocument, kElement, kAttribute, kText, kSection };  // CDATA

struct XmlNode {
  XmlName name = nullptr;  // of elements and attributes, with the prefix
  NodeId parent = kNoNode;
  NodeId firstChild = 0;    // one behind the attributes; `end` without a child
  NodeId end = 0;           // one behind the last descendant
  std::uint32_t begin = 0;  // where the text of the others begins,
  std::uint32_t size = 0;   // and how long it is
  NodeKind kind = NodeKind::kDocument;
  bool isInNamespace : 1 = false;
  bool keepsSpace : 1 = false;     // xml:space="preserve" holds here
  bool isSpaceInside : 1 = false;  // white space was dropped before the first child,
  bool isSpaceBehind : 1 = false;  // or behind this node
};

struct XmlError {
  std::int32_t line = 0;  // 0: none
  std::wstring reason;
};

class XmlTree {
 public:
  /// A document node alone.
  XmlTree();

  const XmlNode& operator[](NodeId id) const { return m_nodes[id]; }
  NodeId Size() const { return static_cast<NodeId>(m_nodes.size()); }

  XmlName FindName(std::string_view name) const {
    return xmlDictExists(m_dictionary.Get(), reinterpret_cast<XmlName>(name.data()),
                         static_cast<int>(name.size()));
  }

  /// The node's own text: that of an attribute, a text or a section.
  std::string_view Text(NodeId id) const {
    return std::string_view(m_texts).substr(m_nodes[id].begin, m_nodes[id].size);
  }

 private:
  friend class XmlTreeBuilder;

  Owner<xmlDict*, xmlDictFree> m_dictionary;
  std::vector<XmlNode> m_nodes;
  std::string m_texts;
};

/// Returns the place of the first lone surrogate or unit beyond Unicode; the size of `text` if
/// none.
std::size_t FindHalfCharacter(std::wstring_view text);

/// Reads XML 1.0 with namespaces as MSXML 6.0 does; without content and with `error` set when it is
/// refused. Throws std::bad_alloc.
XmlTree ParseXml(std::wstring_view xml, XmlError& error);

/// Returns MSXML's `text` of a node while white space is not preserved.
std::wstring TextOf(const XmlTree& tree, NodeId id);

}  // namespace platform
