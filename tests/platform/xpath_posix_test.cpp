// The document's own answers against libxml2's XPath, on the same documents: the plain queries from
// the index, and all others.

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <algorithm>
#include <memory>
#include <random>

#include "platform/posix/xml_query.h"
#include "platform/utf.h"

namespace platform {

namespace {

template <typename... Options>
std::string Pick(std::mt19937& random, Options... options) {
  const char* const all[] = {options...};
  return all[random() % sizeof...(options)];
}

std::string RandomId(std::mt19937& random) {
  return Pick(random, "", "1", "1", "01", "2", "K1", "a/b", "a]b", "[x]", "it's", "b&amp;c", " 1",
              "1 ", "印", "𠮷");
}

std::string RandomElement(std::mt19937& random, int depth) {
  const std::string name = Pick(random, "A", "A", "B", "B", "C", "p:A", "a");
  std::string xml = "<" + name;
  if (random() % 8 == 0) xml += Pick(random, " xmlns='u:d'", " xmlns=''", " xmlns:p='u:q'");
  if (random() % 2) xml += " ID=\"" + RandomId(random) + "\"";
  if (random() % 8 == 0) xml += " p:ID=\"" + RandomId(random) + "\"";
  if (random() % 8 == 0) xml += Pick(random, " xml:space='preserve'", " xml:space='default'");
  if (random() % 8 == 0) xml += Pick(random, " xml:lang='en-GB'", " xml:lang='ja'");
  xml += ">";
  for (auto left = depth > 4 ? 0 : random() % 6; left > 0; --left) {
    if (random() % 2)
      xml += Pick(random, " ", "\n\t", "t", "1", " 2 ", "&lt;x&gt;", "&#32;", "印刷");
    xml += random() % 3
               ? RandomElement(random, depth + 1)
               : Pick(random, "<!-- c -->", "<?x y?>", "t<![CDATA[ d ]]>", "<b/><![CDATA[]]>");
    if (random() % 3 == 0) xml += Pick(random, " ", "\n", "3.5", "-4", "tail ");
  }
  return xml + "</" + name + ">";
}

std::string RandomNodeTest(std::mt19937& random) {
  return Pick(random, "A", "B", "C", "*", "node()", "text()", "comment()", "xml:*", "a",
              "processing-instruction('x')", "processing-instruction()");
}

std::string RandomValue(std::mt19937& random, int depth);

std::string RandomPath(std::mt19937& random, int depth) {
  std::string path =
      Pick(random, "", "", "./", ".//", "/", "//", "../", "(//A|.//B)[2]/", "(//*)[last()]/");
  for (auto steps = 1 + random() % (depth == 0 ? 3 : 2); steps > 0; --steps) {
    path += Pick(random, "", "", "", "@", "ancestor::", "ancestor-or-self::", "descendant::",
                 "self::", "descendant-or-self::", "following-sibling::", "preceding-sibling::",
                 "parent::", "preceding::", "attribute::");
    path += RandomNodeTest(random);
    while (depth == 0 && random() % 3 == 0) path += "[" + RandomValue(random, depth + 1) + "]";
    if (steps > 1) path += Pick(random, "/", "/", "//");
  }
  return path;
}

std::string RandomValue(std::mt19937& random, int depth) {
  const auto value = [&] { return RandomValue(random, depth + 1); };
  const auto path = [&] { return RandomPath(random, depth + 1); };
  switch (depth > 3 ? random() % 4 : random() % 12) {
    case 0:
      return Pick(random, "1", "2", ".5", "position()", "last()", "last()-1", "-1", "0 div 0",
                  "1 div 0");
    case 1:
      return Pick(random, "'1'", "\"K1\"", "''", "' 2 '", "'a/b'", "true()", "false()");
    case 2:
      return Pick(random, "@ID", "@ID='1'", "@ID=1", "name()", "local-name()", "namespace-uri()",
                  ".", "..");
    case 3:
      return path();
    case 4:
      return value() + Pick(random, "=", "!=", "<", ">=", " or ", " and ") + value();
    case 5:
      return value() + Pick(random, "+", " - ", "*", " mod ", " div ") + value();
    case 6:
      return path() + Pick(random, "=", "!=", "<", ">=", "|") + path();
    case 7:
      return Pick(random, "not", "boolean", "string", "number", "string-length", "normalize-space",
                  "floor", "ceiling", "lang") +
             "(" + value() + ")";
    case 8:
      return Pick(random, "count", "sum", "name", "local-name", "id") + "(" + path() + ")";
    case 9:
      return Pick(random, "contains", "starts-with", "substring-before", "substring-after",
                  "concat", "substring") +
             "(" + value() + "," + value() + ")";
    case 10:
      return "substring(" + value() + "," + value() + "," + value() + ")";
    default:
      return "translate(" + value() + ",'1aE','x')";
  }
}

std::string RandomPlain(std::mt19937& random) {
  std::string query = Pick(random, "", "./");
  for (auto steps = 1 + random() % 4; steps > 0; --steps) {
    query += Pick(random, "A", "B", "C", "a", "Missing");
    if (random() % 3 == 0) {
      const std::string quote = Pick(random, "'", "\"");
      query +=
          "[@" + Pick(random, "ID", "ID", "Missing") + "=" + quote + RandomId(random) + quote + "]";
    }
    if (steps > 1) query += "/";
  }
  return query;
}

/// What an ID with quotes and brackets may make of a query: a character too many, another too few.
std::string Damage(std::mt19937& random, std::string query) {
  query.insert(random() % query.size(), Pick(random, "\"", "'", "[", "]", "(", ")", "/", "@", "*",
                                             " ", ":", "|", "-", "$", "A", "1", "!"));
  if (random() % 2) query.erase(random() % query.size(), 1);
  return query;
}

void Ignore(void*, const char*, ...) {}

/// libxml2's tree of a document, without the white space that is dropped, its nodes numbered alike.
class Oracle {
 public:
  explicit Oracle(const std::string& xml)
      : m_document(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", 0)) {
    Number(reinterpret_cast<xmlNode*>(m_document.get()));
    xmlSetGenericErrorFunc(nullptr, &Ignore);
  }
  Oracle(const Oracle&) = delete;
  Oracle& operator=(const Oracle&) = delete;
  ~Oracle() { xmlSetGenericErrorFunc(nullptr, nullptr); }

  /// The numbers of the nodes, or nothing for another value or an error.
  std::optional<xpath::NodeSet> Evaluate(NodeId context, const std::string& query) const {
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> xpath(
        xmlXPathNewContext(m_document.get()), &xmlXPathFreeContext);
    xpath->node = m_nodes[context];
    const std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> value(
        xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(query.c_str()), xpath.get()),
        &xmlXPathFreeObject);
    if (value == nullptr || value->type != XPATH_NODESET) return std::nullopt;
    xpath::NodeSet found;
    const xmlNodeSet* const nodes = value->nodesetval;
    for (int i = 0; nodes != nullptr && i < nodes->nodeNr; ++i)
      found.push_back(
          static_cast<NodeId>(reinterpret_cast<std::uintptr_t>(nodes->nodeTab[i]->_private)));
    std::ranges::sort(found);
    return found;
  }

  NodeId Size() const { return static_cast<NodeId>(m_nodes.size()); }

 private:
  void Add(xmlNode* node) {
    if (node != nullptr) node->_private = reinterpret_cast<void*>(m_nodes.size());
    m_nodes.push_back(node);
  }

  void Number(xmlNode* node) {
    Add(node);
    if (node->type == XML_ELEMENT_NODE) {
      for (xmlAttr* each = node->properties; each != nullptr; each = each->next)
        Add(reinterpret_cast<xmlNode*>(each));
      for (const xmlNs* each = node->nsDef; each != nullptr; each = each->next) Add(nullptr);
    }
    if (node->type != XML_ELEMENT_NODE && node->type != XML_DOCUMENT_NODE) return;
    for (xmlNode *each = node->children, *next; each != nullptr; each = next) {
      next = each->next;
      const bool isDropped =
          each->type == XML_TEXT_NODE && xmlIsBlankNode(each) && xmlNodeGetSpacePreserve(node) != 1;
      if (!isDropped) {
        Number(each);
        continue;
      }
      xmlUnlinkNode(each);
      xmlFreeNode(each);
    }
  }

  std::unique_ptr<xmlDoc, decltype([](xmlDoc* document) { xmlFreeDoc(document); })> m_document;
  std::vector<xmlNode*> m_nodes;
};

std::optional<xpath::NodeSet> Select(XmlContent& content, NodeId context,
                                     const std::string& query) {
  try {
    return content.Select(context, FromUtf8(query));
  } catch (const xpath::QueryError&) {
    return std::nullopt;
  }
}

}  // namespace

TEST(XPath, AnswersAsLibxml2DoesOnGeneratedDocuments) {
  std::mt19937 random(20240601);
  std::size_t answers = 0;
  std::size_t plain = 0;
  for (int round = 0; round < 100; ++round) {
    const std::string xml = "<R xmlns:p='u:p'>" + RandomElement(random, 2) +
                            RandomElement(random, 2) + RandomElement(random, 2) + "</R>";
    const Oracle oracle(xml);
    XmlError error;
    XmlContent content(ParseXml(FromUtf8(xml), error));
    ASSERT_EQ(oracle.Size(), content.Tree().Size()) << xml;
    for (int i = 0; i < 100; ++i) {
      const bool isDamaged = i % 4 == 0;
      std::string query = i % 2 ? RandomPlain(random) : RandomPath(random, 0);
      if (isDamaged) query = Damage(random, query);
      NodeId context = i % 5 == 0 ? static_cast<NodeId>(random() % oracle.Size()) : 1;
      if (content.Tree().IsAttribute(context)) context = content.Tree()[context].parent;
      const auto expected = oracle.Evaluate(context, query);
      const auto found = Select(content, context, query);
      // libxml2 takes some queries that are not well-formed, and functions that do not exist as
      // long as it need not call them.
      if (!found && isDamaged) continue;
      ASSERT_EQ(expected, found) << query << " at " << context << " of " << xml;
      if (!found) continue;
      SCOPED_TRACE(query);
      const NodeId first = content.SelectFirst(context, FromUtf8(query));
      EXPECT_EQ(found->empty() ? kNoNode : found->front(), first) << query;
      answers += !found->empty();
      plain += !found->empty() && PlainQuery::Parse(FromUtf8(query)).has_value();
    }
  }
  EXPECT_GT(answers, 500U);
  EXPECT_GT(plain, 150U);
}

}  // namespace platform
