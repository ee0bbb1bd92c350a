#pragma once

// Queries on a loaded document. They have one form, that of the reader's: `./`, which may be left
// out, then steps parted by `/`, each the name of a child element or NAME[@NAME="TEXT"], which also
// compares one of its attributes. Names are of ASCII letters and without a prefix. The meaning is
// that of XPath; every other query of XPath is refused.
//
// An ID of a policy goes into a query as it stands, so a query may come from hostile hands. The
// queries on a document have a common bound of steps; a query beyond it is refused.

#include <optional>
#include <string_view>
#include <vector>

#include "platform/posix/xml/xml_tree.h"

namespace platform {

/// The query has another form, or has cost too much.
struct QueryError {};

/// A document's nodes, and the answers to queries on them.
class XmlContent {
 public:
  static constexpr std::uint64_t kSteps = 1'000'000'000;  // some seconds

  explicit XmlContent(XmlTree tree, std::uint64_t steps = kSteps)
      : m_tree(std::move(tree)), m_stepsLeft(steps) {}
  XmlContent(const XmlContent&) = delete;
  XmlContent& operator=(const XmlContent&) = delete;

  const XmlTree& Tree() const { return m_tree; }

  /// Returns the first `most` elements of the query, in document order. Throws QueryError.
  std::vector<NodeId> Select(NodeId context, std::wstring_view query, std::size_t most);

 private:
  class Search;

  /// An attribute, with the keys of the index.
  struct Attribute {
    NodeId parent;  // of its element
    XmlName name;
    std::string_view value;
    NodeId element;
  };

  /// Those without a namespace, in the order of these members.
  std::vector<Attribute> SortedAttributes() const;

  const XmlTree m_tree;
  std::optional<std::vector<Attribute>> m_index;  // made when it is first needed
  std::uint64_t m_stepsLeft;
};

}  // namespace platform
