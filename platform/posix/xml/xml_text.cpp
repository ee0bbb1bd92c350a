// What MSXML gives as a node's `text`: the texts and CDATA sections below it, one after the other.
// Unless xml:space="preserve" holds for the node, white space at both ends goes, as far as it is
// not part of a section, and white space that was dropped between two parts stands as one blank.

#include <algorithm>

#include "platform/posix/xml/xml_tree.h"

namespace platform {

namespace {

class TextCollector {
 public:
  explicit TextCollector(const XmlTree& tree) : m_tree(tree) {}

  std::wstring Collect(NodeId id) {
    AddPart(id);
    const NodeId owner = m_tree[id].kind == NodeKind::kText ? m_tree[id].parent : id;
    if (!m_tree[owner].keepsSpace) Trim();
    return std::move(m_text);
  }

 private:
  /// True if dropped white space follows the last part.
  bool AddChildren(NodeId id) {
    const std::size_t begin = m_text.size();
    bool isSpace = m_tree[id].isSpaceInside;
    m_tree.ForEachChild(id, [&](NodeId child) {
      // A blank is put between two parts of this node only, and is taken back if there is no
      // second.
      const std::size_t end = m_text.size();
      const bool isBlank = isSpace && end > begin;
      if (isBlank) m_text += L' ';
      const std::size_t childBegin = m_text.size();
      const bool isSpaceAtEnd = AddPart(child);
      const bool isPart = m_text.size() > childBegin || m_tree[child].kind == NodeKind::kSection;
      if (!isPart && isBlank) m_text.resize(end);
      isSpace = (isSpace && !isPart) || isSpaceAtEnd || m_tree[child].isSpaceBehind;
    });
    return isSpace;
  }

  bool AddPart(NodeId id) {
    switch (m_tree[id].kind) {
      case NodeKind::kDocument:
      case NodeKind::kElement:
        return AddChildren(id);
      case NodeKind::kText:
        m_text += m_tree.Text(id);
        return false;
      case NodeKind::kSection:
        m_firstSection = std::min(m_firstSection, m_text.size());
        m_text += m_tree.Text(id);
        m_lastSectionEnd = m_text.size();
        return false;
      default:
        return false;
    }
  }

  void Trim() {
    constexpr wchar_t kSpace[] = L" \t\n\r";
    const std::size_t end = m_text.find_last_not_of(kSpace) + 1;  // 0 if there is nothing else
    m_text.resize(std::max(end, m_lastSectionEnd));
    m_text.erase(0, std::min({m_text.find_first_not_of(kSpace), m_firstSection, m_text.size()}));
  }

  const XmlTree& m_tree;
  std::wstring m_text;
  std::size_t m_firstSection = std::wstring::npos;
  std::size_t m_lastSectionEnd = 0;
};

}  // namespace

std::wstring TextOf(const XmlTree& tree, NodeId id) {
  switch (tree[id].kind) {
    case NodeKind::kDocument:
    case NodeKind::kElement:
    case NodeKind::kText:
    case NodeKind::kSection:
      return TextCollector(tree).Collect(id);
    default:
      return std::wstring(tree.Text(id));
  }
}

}  // namespace platform
