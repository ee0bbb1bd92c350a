// MSXML's `text` of a node: the texts and CDATA sections below it, one after the other.
// Unless xml:space="preserve" holds for the node, white space at both ends goes, as far as it is
// not part of a section, and white space that was dropped between two parts stands as one blank.

#include <algorithm>

#include "platform/posix/xml/xml_tree.h"
#include "platform/utf.h"

namespace platform {

namespace {

class TextCollector {
 public:
  explicit TextCollector(const XmlTree& tree) : m_tree(tree) {}

  std::string Collect(NodeId id) {
    AddChildren(id);
    if (!m_tree[id].keepsSpace) Trim();
    return std::move(m_text);
  }

 private:
  /// True if dropped white space follows the last part.
  bool AddChildren(NodeId id) {
    const std::size_t begin = m_text.size();
    bool isSpace = m_tree[id].isSpaceInside;
    for (NodeId child = m_tree[id].firstChild; child < m_tree[id].end; child = m_tree[child].end) {
      // A blank is put between two parts of this node only, and is taken back if there is no
      // second.
      const std::size_t end = m_text.size();
      const bool isBlank = isSpace && end > begin;
      if (isBlank) m_text += ' ';
      const std::size_t childBegin = m_text.size();
      const bool isSpaceAtEnd = AddPart(child);
      const bool isPart = m_text.size() > childBegin || m_tree[child].kind == NodeKind::kSection;
      if (!isPart && isBlank) m_text.resize(end);
      isSpace = (isSpace && !isPart) || isSpaceAtEnd || m_tree[child].isSpaceBehind;
    }
    return isSpace;
  }

  bool AddPart(NodeId id) {
    const NodeKind kind = m_tree[id].kind;
    if (kind == NodeKind::kElement) return AddChildren(id);
    if (kind == NodeKind::kSection) m_firstSection = std::min(m_firstSection, m_text.size());
    m_text += m_tree.Text(id);
    if (kind == NodeKind::kSection) m_lastSectionEnd = m_text.size();
    return false;
  }

  void Trim() {
    constexpr char kSpace[] = " \t\n\r";
    const std::size_t end = m_text.find_last_not_of(kSpace) + 1;  // 0 if there is nothing else
    m_text.resize(std::max(end, m_lastSectionEnd));
    m_text.erase(0, std::min({m_text.find_first_not_of(kSpace), m_firstSection, m_text.size()}));
  }

  const XmlTree& m_tree;
  std::string m_text;
  std::size_t m_firstSection = std::string::npos;
  std::size_t m_lastSectionEnd = 0;
};

}  // namespace

std::wstring TextOf(const XmlTree& tree, NodeId id) {
  if (tree[id].kind == NodeKind::kAttribute) return FromUtf8(tree.Text(id));
  return FromUtf8(TextCollector(tree).Collect(id));
}

}  // namespace platform
