#include "platform/posix/xml/xml_query.h"

#include <algorithm>
#include <span>
#include <tuple>

#include "platform/utf.h"

namespace platform {

namespace {

struct Step {
  std::string_view name;
  std::string_view attribute;  // empty: no comparison
  std::string_view value;
};

/// Takes the steps off a query.
class Scanner {
 public:
  explicit Scanner(std::string_view query) : m_rest(query) {}

  std::vector<Step> Steps() {
    std::vector<Step> steps;
    steps.reserve(5);  // as many as the longest query of the reader has
    Take("./");
    do {
      Step& step = steps.emplace_back();
      step.name = Name();
      if (!Take("[@")) continue;
      step.attribute = Name();
      Expect("=\"");
      step.value = Until(m_rest.find('"'));
      Expect("\"]");
    } while (Take("/"));
    if (!m_rest.empty()) throw QueryError();
    return steps;
  }

 private:
  bool Take(std::string_view sign) {
    if (!m_rest.starts_with(sign)) return false;
    m_rest.remove_prefix(sign.size());
    return true;
  }

  void Expect(std::string_view sign) {
    if (!Take(sign)) throw QueryError();
  }

  std::string_view Until(std::size_t end) {
    const std::string_view part = m_rest.substr(0, end);
    m_rest.remove_prefix(part.size());
    return part;
  }

  std::string_view Name() {
    const auto isLetter = [](char byte) {
      return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    };
    const auto* const end = std::ranges::find_if_not(m_rest, isLetter);
    if (end == m_rest.begin()) throw QueryError();
    return Until(static_cast<std::size_t>(end - m_rest.begin()));
  }

  std::string_view m_rest;
};

}  // namespace

std::vector<XmlContent::Attribute> XmlContent::SortedAttributes() const {
  std::vector<Attribute> all;
  for (NodeId id = 0; id < m_tree.Size(); ++id) {
    const XmlNode& node = m_tree[id];
    if (node.kind == NodeKind::kAttribute && !node.isInNamespace)
      all.push_back({m_tree[node.parent].parent, node.name, m_tree.Text(id), node.parent});
  }
  std::ranges::sort(all, {}, [](const Attribute& each) {
    return std::tie(each.parent, each.name, each.value, each.element);
  });
  return all;
}

/// Follows the steps of a query. Each node is reached once at most, so a query costs no more than a
/// walk through the whole document.
class XmlContent::Search {
 public:
  Search(XmlContent& content, std::size_t most) : m_content(content), m_most(most) {}

  void Follow(NodeId from, std::span<const Step> steps) {
    if (steps.empty()) return m_found.push_back(from);
    const Step& step = steps.front();
    const XmlName name = m_tree.FindName(step.name);
    const auto follow = [&](NodeId child) {
      Count();
      const XmlNode& node = m_tree[child];
      if (node.kind == NodeKind::kElement && node.name == name && !node.isInNamespace)
        Follow(child, steps.subspan(1));
    };
    if (step.attribute.empty()) {
      NodeId child = m_tree[from].firstChild;
      for (; child < m_tree[from].end && !IsDone(); child = m_tree[child].end) follow(child);
    } else {
      for (const Attribute& each : Find(from, m_tree.FindName(step.attribute), step.value))
        if (!IsDone()) follow(each.element);
    }
  }

  std::vector<NodeId>& Found() { return m_found; }

 private:
  bool IsDone() const { return m_found.size() >= m_most; }

  std::span<const Attribute> Find(NodeId parent, XmlName name, std::string_view value) {
    auto& index = m_content.m_index;
    if (!index) index = m_content.SortedAttributes();
    return std::ranges::equal_range(
        *index, std::tie(parent, name, value), {},
        [](const Attribute& each) { return std::tie(each.parent, each.name, each.value); });
  }

  /// The first steps of each query cost nothing, and more than them only a large document takes.
  void Count() {
    constexpr int kFreeSteps = 1000;
    if (++m_steps <= kFreeSteps) return;
    if (m_content.m_stepsLeft == 0) throw QueryError();
    --m_content.m_stepsLeft;
  }

  XmlContent& m_content;
  const XmlTree& m_tree = m_content.Tree();
  const std::size_t m_most;
  int m_steps = 0;
  std::vector<NodeId> m_found;
};

std::vector<NodeId> XmlContent::Select(NodeId context, std::wstring_view query, std::size_t most) {
  if (FindHalfCharacter(query) != query.size()) throw QueryError();
  const std::string utf8 = ToUtf8(query);
  Search search(*this, most);
  search.Follow(context, Scanner(utf8).Steps());
  return std::move(search.Found());
}

}  // namespace platform
