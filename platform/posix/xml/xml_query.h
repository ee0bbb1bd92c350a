#pragma once

// Queries on a loaded document. Those of the plain form, child steps of unprefixed names with at
// most one comparison of an attribute each, as in `./A/B[@ID="x"]/C`, are answered from an index of
// the attributes; all others by XPath. Which way is taken makes no difference to the answer.

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/posix/xml/xml_tree.h"
#include "platform/posix/xml/xpath.h"

namespace platform {

struct PlainStep {
  std::wstring_view name;
  std::wstring_view attribute;  // empty: no comparison
  std::wstring_view value;
};

class PlainQuery {
 public:
  static constexpr std::size_t kMaxSteps = 8;

  /// Nothing if the query has another form. What is given looks at the text of `query`.
  static std::optional<PlainQuery> Parse(std::wstring_view query);

  std::span<const PlainStep> Steps() const { return {m_steps.data(), m_count}; }

 private:
  std::array<PlainStep, kMaxSteps> m_steps;
  std::size_t m_count = 0;
};

/// Finds elements by their parent and an attribute of theirs in the same time in every document.
class AttributeIndex {
 public:
  explicit AttributeIndex(const XmlTree& tree);

  /// Calls `visit` with each such element in document order until it gives true.
  template <typename Visit>
  bool Find(NodeId parent, std::uint32_t attribute, std::wstring_view value, Visit visit) const {
    for (std::uint32_t at = m_heads[Slot(parent, attribute, value)]; at != kEnd;
         at = m_entries[at].next) {
      const NodeId id = m_entries[at].attribute;
      const NodeId element = m_tree[id].parent;
      if (m_tree[element].parent == parent && m_tree[id].name == attribute &&
          m_tree.Text(id) == value && visit(element))
        return true;
    }
    return false;
  }

 private:
  static constexpr std::uint32_t kEnd = static_cast<std::uint32_t>(-1);
  struct Entry {
    NodeId attribute;
    std::uint32_t next;  // of the same slot, in document order
  };

  std::size_t Slot(NodeId parent, std::uint32_t attribute, std::wstring_view value) const;

  const XmlTree& m_tree;
  std::vector<std::uint32_t> m_heads;
  std::vector<Entry> m_entries;
};

/// A document's nodes, and the answers to queries on them. What all queries together may cost is
/// bounded: those that would go beyond fail.
class XmlContent {
 public:
  explicit XmlContent(XmlTree tree) : m_tree(std::move(tree)) {}
  XmlContent(const XmlContent&) = delete;
  XmlContent& operator=(const XmlContent&) = delete;

  const XmlTree& Tree() const { return m_tree; }

  /// In document order. Throws xpath::QueryError.
  xpath::NodeSet Select(NodeId context, std::wstring_view query);
  /// The first of them, or kNoNode.
  NodeId SelectFirst(NodeId context, std::wstring_view query);

 private:
  template <typename Visit>
  void Search(NodeId context, const PlainQuery& query, Visit visit);

  const XmlTree m_tree;
  std::optional<AttributeIndex> m_index;  // made when it is first needed
  xpath::Budget m_budget{200'000'000};    // some seconds
};

}  // namespace platform
