#include "platform/posix/xml/xml_query.h"

#include <algorithm>
#include <bit>
#include <functional>

namespace platform {

namespace {

/// Takes plain steps off a query.
class PlainScanner {
 public:
  explicit PlainScanner(std::wstring_view query) : m_rest(query) {}

  bool IsAtEnd() const { return m_rest.empty(); }

  bool Take(std::wstring_view sign) {
    if (!m_rest.starts_with(sign)) return false;
    m_rest.remove_prefix(sign.size());
    return true;
  }

  bool TakeStep(PlainStep& step) {
    if (!TakeName(step.name)) return false;
    if (!Take(L"[")) return true;
    return Take(L"@") && TakeName(step.attribute) && Take(L"=") && TakeLiteral(step.value) &&
           Take(L"]");
  }

 private:
  /// ASCII names alone: others are XPath's to judge.
  bool TakeName(std::wstring_view& name) {
    const auto isStart = [](wchar_t unit) {
      return (unit >= L'A' && unit <= L'Z') || (unit >= L'a' && unit <= L'z') || unit == L'_';
    };
    const auto isPart = [&](wchar_t unit) {
      return isStart(unit) || (unit >= L'0' && unit <= L'9') || unit == L'-' || unit == L'.';
    };
    if (m_rest.empty() || !isStart(m_rest[0])) return false;
    return TakeUntil(std::ranges::find_if_not(m_rest, isPart), name);
  }

  bool TakeLiteral(std::wstring_view& value) {
    if (m_rest.empty()) return false;
    const wchar_t quote = m_rest[0];
    if (quote != L'"' && quote != L'\'') return false;
    m_rest.remove_prefix(1);
    const auto end = std::ranges::find(m_rest, quote);
    if (end == m_rest.end()) return false;
    TakeUntil(end, value);
    m_rest.remove_prefix(1);
    return true;
  }

  bool TakeUntil(std::wstring_view::iterator end, std::wstring_view& part) {
    part = {m_rest.begin(), end};
    m_rest.remove_prefix(part.size());
    return true;
  }

  std::wstring_view m_rest;
};

/// A step with the document's numbers for its names.
struct NumberedStep {
  std::uint32_t name;
  std::uint32_t attribute;
  const PlainStep* plain;
};

/// Follows the steps of a plain query from a node. Ordinary documents are searched for nothing;
/// going through many children, or back to a second element, costs.
template <typename Visit>
class PlainSearch {
 public:
  PlainSearch(const XmlTree& tree, const AttributeIndex& index, xpath::Budget& budget, Visit visit)
      : m_tree(tree), m_index(index), m_budget(budget), m_visit(visit) {}

  /// True as soon as the visitor gave true.
  bool Follow(NodeId from, std::span<const NumberedStep> steps) {
    if (steps.empty()) return m_visit(from);
    const NumberedStep& step = steps.front();
    if (step.plain->attribute.empty()) return FollowChildren(from, steps);
    std::uint64_t met = 0;
    return m_index.Find(from, step.attribute, step.plain->value, [&](NodeId element) {
      if (met++ > 0) m_budget.Spend(1);
      return m_tree[element].name == step.name && Follow(element, steps.subspan(1));
    });
  }

 private:
  bool FollowChildren(NodeId from, std::span<const NumberedStep> steps) {
    constexpr std::uint64_t kFreeSteps = 64;
    std::uint64_t met = 0;
    for (NodeId child = m_tree[from].firstChild; child < m_tree[from].end;
         child = m_tree[child].end) {
      if (++met % kFreeSteps == 0) m_budget.Spend(1);
      const bool isMatch =
          m_tree[child].kind == NodeKind::kElement && m_tree[child].name == steps.front().name;
      if (isMatch && Follow(child, steps.subspan(1))) return true;
    }
    return false;
  }

  const XmlTree& m_tree;
  const AttributeIndex& m_index;
  xpath::Budget& m_budget;
  Visit m_visit;
};

}  // namespace

std::optional<PlainQuery> PlainQuery::Parse(std::wstring_view query) {
  PlainScanner scanner(query);
  PlainQuery plain;
  scanner.Take(L"./");
  do {
    if (plain.m_count == plain.m_steps.size()) return std::nullopt;
    if (!scanner.TakeStep(plain.m_steps[plain.m_count++])) return std::nullopt;
  } while (scanner.Take(L"/"));
  if (!scanner.IsAtEnd()) return std::nullopt;
  return plain;
}

AttributeIndex::AttributeIndex(const XmlTree& tree) : m_tree(tree) {
  for (NodeId id = 0; id < tree.Size(); ++id)
    if (tree[id].kind == NodeKind::kAttribute) m_entries.push_back({id, kEnd});
  m_heads.assign(std::bit_ceil(m_entries.size() + 1), kEnd);
  for (auto at = static_cast<std::uint32_t>(m_entries.size()); at-- > 0;) {
    const NodeId id = m_entries[at].attribute;
    const NodeId parent = tree[tree[id].parent].parent;
    std::uint32_t& head = m_heads[Slot(parent, tree[id].name, tree.Text(id))];
    m_entries[at].next = std::exchange(head, at);
  }
}

std::size_t AttributeIndex::Slot(NodeId parent, std::uint32_t attribute,
                                 std::wstring_view value) const {
  std::size_t hash = std::hash<std::wstring_view>()(value);
  hash ^=
      (parent * std::size_t{0x9E3779B97F4A7C15}) ^ (attribute * std::size_t{0xC2B2AE3D27D4EB4F});
  return (hash ^ (hash >> 32)) & (m_heads.size() - 1);
}

template <typename Visit>
void XmlContent::Search(NodeId context, const PlainQuery& query, Visit visit) {
  std::array<NumberedStep, PlainQuery::kMaxSteps> numbered;
  std::size_t count = 0;
  for (const PlainStep& step : query.Steps()) {
    const std::uint32_t name = m_tree.FindName(step.name);
    const std::uint32_t attribute = step.attribute.empty() ? 0 : m_tree.FindName(step.attribute);
    if (name == kNoName || attribute == kNoName) return;
    numbered[count++] = {name, attribute, &step};
  }
  if (!m_index) m_index.emplace(m_tree);
  PlainSearch<Visit>(m_tree, *m_index, m_budget, visit).Follow(context, {numbered.data(), count});
}

xpath::NodeSet XmlContent::Select(NodeId context, std::wstring_view query) {
  const auto plain = PlainQuery::Parse(query);
  if (!plain) return xpath::Evaluate(m_tree, context, xpath::Parse(query), m_budget);
  xpath::NodeSet nodes;
  Search(context, *plain, [&](NodeId node) {
    nodes.push_back(node);
    return false;
  });
  return nodes;
}

NodeId XmlContent::SelectFirst(NodeId context, std::wstring_view query) {
  const auto plain = PlainQuery::Parse(query);
  if (!plain) {
    const auto nodes = xpath::Evaluate(m_tree, context, xpath::Parse(query), m_budget);
    return nodes.empty() ? kNoNode : nodes.front();
  }
  NodeId first = kNoNode;
  Search(context, *plain, [&](NodeId node) {
    first = node;
    return true;
  });
  return first;
}

}  // namespace platform
