// The document's own answers against libxml2's XPath, on the same documents: the plain queries from
// the index, and all others.

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpathInternals.h>

#include <algorithm>
#include <memory>
#include <random>

#include "platform/posix/xml/xml_query.h"
#include "platform/utf.h"

namespace platform {

namespace {

std::mt19937 g_random(20240601);

std::string Pick(const auto*... options) {
  const char* const all[] = {options...};
  return all[g_random() % sizeof...(options)];
}

std::string Id() {
  return Pick("", "1", "1", "01", "2", "a/b", "a]b", "it's", "' or '1'='1", " 1", "1 ", "印", "𠮷");
}

std::string Element(int depth) {
  const std::string name = Pick("A", "A", "B", "B", "C", "p:A", "a");
  std::string xml = "<" + name + Pick("", "", "", " xmlns='u:d'", " xmlns=''", " xmlns:p='u:q'");
  if (g_random() % 2) xml += " ID=\"" + Id() + "\"";
  xml += Pick("", "", " p:ID='1'", " xml:lang='en-GB'") + ">";
  for (auto left = depth > 4 ? 0 : g_random() % 6; left > 0; --left)
    xml += Pick("", "t", "1", " 2 ", "&lt;x&gt;", "<!-- c -->", "<?x y?>", "3.5<![CDATA[ d ]]>") +
           Element(depth + 1);
  return xml + "</" + name + ">";
}

/// A step of the plain form, unless the ID makes something else of it.
std::string RandomStep() {
  const std::string quote = Pick("'", "\"");
  const std::string name = Pick("A", "B", "C", "a", "Missing");
  return g_random() % 3 ? name : name + "[@" + Pick("ID", "No") + "=" + quote + Id() + quote + "]";
}

std::string GeneralPath() {
  return Pick("", ".//", "/", "//", "../", "(//A|.//B)[2]/", "(//*)[last()]/") +
         Pick("", "@", "ancestor::", "ancestor-or-self::", "descendant::", "self::", "parent::",
              "descendant-or-self::", "following-sibling::", "preceding-sibling::", "preceding::",
              "following::") +
         Pick("A", "*", "node()", "text()", "comment()", "xml:*", "processing-instruction('x')") +
         Pick("", "[2]", "[last() - 1]", "[position() mod 2 = 1]", "[@ID != ../@ID]",
              "[not(*) and ..]", "[count(.//node()) > 3]", "[sum(//@ID[.>0]) > -.5 div 2]",
              "[string-length(name()) * 2 = 2]", "[contains(., '1')]", "[starts-with(@ID, 'a')]",
              "[translate(@ID, '1aE', 'x') = 'x']", "[lang('en')]", "[number() >= -1 div 0]",
              "[substring-after(@ID, 'a') = substring(concat('/', 'b'), .5, 2)]", "[. < ../B]",
              "[substring-before(string(@ID), ']') = 'a']", "[normalize-space(@ID) = '1']",
              "[namespace-uri() = '']", "[local-name() = 'A']", "[id('1') | B[2]/@*]",
              "[boolean(floor(@ID) + ceiling(@ID))]", "[. = following::A]", "[round(@ID) = 2]") +
         Pick("", "", "/*", "//B", "/@ID", "/..");
}

using Answer = std::optional<xpath::NodeSet>;

/// libxml2's answers on a document, by the numbers that its nodes have in our tree.
class Oracle {
 public:
  Oracle(const std::string& xml, const XmlTree& tree)
      : m_document(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", 0),
                   &xmlFreeDoc),
        m_xpath(xmlXPathNewContext(m_document.get()), &xmlXPathFreeContext),
        m_nodes(tree.Size()) {
    m_xpath->error = [](void*, xmlError*) {};  // else they are printed
    const auto all = Evaluate("/ | //node() | //@*");
    xmlXPathNodeSetSort(all->nodesetval);
    xmlNode** next = all->nodesetval->nodeTab;
    for (NodeId id = 0; id < tree.Size(); ++id) {
      if (tree[id].kind == NodeKind::kDeclaration) continue;
      m_nodes[id] = *next++;
      m_nodes[id]->_private = reinterpret_cast<void*>(std::uintptr_t{id});
    }
  }

  Answer Select(NodeId context, const std::string& query) {
    m_xpath->node = m_nodes[context];
    const auto value = Evaluate(query);
    if (value == nullptr) return std::nullopt;
    xpath::NodeSet found;
    for (int i = 0; i < xmlXPathNodeSetGetLength(value->nodesetval); ++i)
      found.push_back(static_cast<NodeId>(
          reinterpret_cast<std::uintptr_t>(value->nodesetval->nodeTab[i]->_private)));
    std::ranges::sort(found);
    return found;
  }

 private:
  std::shared_ptr<xmlXPathObject> Evaluate(const std::string& query) {
    const auto* const text = reinterpret_cast<const xmlChar*>(query.c_str());
    return {xmlXPathEval(text, m_xpath.get()), &xmlXPathFreeObject};
  }

  std::shared_ptr<xmlDoc> m_document;
  std::shared_ptr<xmlXPathContext> m_xpath;
  std::vector<xmlNode*> m_nodes;
};

Answer Select(XmlContent& content, NodeId context, const std::wstring& query) try {
  const xpath::NodeSet found = content.Select(context, query);
  EXPECT_EQ(content.SelectFirst(context, query), found.empty() ? kNoNode : found[0]);
  return found;
} catch (const xpath::QueryError&) {
  return std::nullopt;
}

}  // namespace

TEST(XPath, AnswersAsLibxml2DoesOnGeneratedDocuments) {
  std::size_t general = 0, plain = 0;
  for (int round = 0; round < 60; ++round) {
    const std::string xml = "<R xmlns:p='u:p'>" + Element(2) + Element(2) + Element(2) + "</R>";
    XmlError error;
    XmlContent content(ParseXml(FromUtf8(xml), error));
    Oracle oracle(xml, content.Tree());
    for (int i = 0; i < 100; ++i) {
      std::string query = i % 2 ? GeneralPath() : Pick("", "./") + RandomStep();
      while (i % 2 == 0 && g_random() % 2) query += "/" + RandomStep();
      NodeId context = i % 5 == 0 ? static_cast<NodeId>(g_random() % content.Tree().Size()) : 1;
      if (content.Tree().IsAttribute(context)) context = content.Tree()[context].parent;
      const Answer found = Select(content, context, FromUtf8(query));
      ASSERT_EQ(found, oracle.Select(context, query))
          << query << " at " << context << " in " << xml;
      const bool isPlain = PlainQuery::Parse(FromUtf8(query)).has_value();
      if (found && !found->empty()) ++(isPlain ? plain : general);
    }
  }
  EXPECT_TRUE(general > 300 && plain > 200) << general << ' ' << plain;
}

TEST(XPath, EndsQueriesThatCostTooMuch) {
  XmlError error;
  const XmlTree tree = ParseXml(L"<A><B/><B/><B/><B/><B/><B/><B/><B/><B/><B/></A>", error);
  const auto count = [&](std::uint64_t units) {
    xpath::Budget budget(units);
    return xpath::Evaluate(tree, 1, xpath::Parse(L"*[*|../*[../*]]"), budget).size();
  };
  EXPECT_EQ(count(100'000), 10U);
  EXPECT_THROW(count(200), xpath::QueryError);
}

}  // namespace platform
