// The answers to queries against libxml2's XPath on the same documents.

#include <gtest/gtest.h>
#include <libxml/xpath.h>

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

std::string Element(int depth) {
  const std::string name = Pick("A", "A", "B", "C", "p:A", "a");
  std::string xml = "<" + name + Pick("", "", "", " xmlns='u:d'", " xmlns=''", " xmlns:p='u:q'");
  xml += Pick("", "", " ID='1'", " ID='01'", " ID='a/b'", " p:ID='1'", " ID='印'", " No='1'") + ">";
  for (auto left = depth > 4 ? 0 : g_random() % 6; left > 0; --left)
    xml += Pick("", "t", " ", "<!-- c -->", "<?x y?>", "<![CDATA[ d ]]>") + Element(depth + 1);
  return xml + "</" + name + ">";
}

std::string Query() {
  std::string query = Pick("", "./");
  do
    query += Pick("A", "B", "C", "a", "Missing") +
             Pick("", "", "[@ID=\"1\"]", "[@ID=\"a/b\"]", "[@ID=\"印\"]", "[@No=\"1\"]") + "/";
  while (g_random() % 2);
  query.pop_back();
  return query;
}

/// How many elements a document has before each that the query gives.
class Places : public std::vector<std::size_t> {
 public:
  Places(XmlContent& content, const std::string& query) {
    const XmlTree& tree = content.Tree();
    for (const NodeId found : content.Select(1, FromUtf8(query), static_cast<std::size_t>(-1))) {
      push_back(0);
      for (NodeId id = 0; id < found; ++id) back() += tree[id].kind == NodeKind::kElement;
    }
  }

  Places(xmlXPathContext* context, const std::string& query) {
    const auto evaluate = [context](const std::string& text) {
      return std::shared_ptr<xmlXPathObject>(
          xmlXPathEval(reinterpret_cast<const xmlChar*>(text.c_str()), context),
          &xmlXPathFreeObject);
    };
    const auto all = evaluate("//*"), found = evaluate(query);
    for (int i = 0; i < xmlXPathNodeSetGetLength(found->nodesetval); ++i)
      for (int place = 0; place < all->nodesetval->nodeNr; ++place)
        if (all->nodesetval->nodeTab[place] == found->nodesetval->nodeTab[i])
          push_back(static_cast<std::size_t>(place));
  }
};

}  // namespace

TEST(XmlQuery, AnswersAsLibxml2DoesOnGeneratedDocuments) {
  std::size_t found = 0;
  for (int round = 0; round < 60; ++round) {
    const std::string xml = "<R xmlns:p='u:p'>" + Element(2) + Element(2) + Element(2) + "</R>";
    XmlError error;
    XmlContent content(ParseXml(FromUtf8(xml), error));
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", 0), &xmlFreeDoc);
    const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(document.get()), &xmlXPathFreeContext);
    for (int i = 0; i < 50; ++i) {
      const std::string query = Query();
      context->node = xmlDocGetRootElement(document.get());
      const Places places(content, query);
      ASSERT_EQ(places, Places(context.get(), query)) << query << " in " << xml;
      found += places.size();
    }
  }
  EXPECT_GT(found, 200U);
}

TEST(XmlQuery, EndsQueriesThatCostTooMuch) {
  std::wstring xml = L"<A>";
  for (int i = 0; i < 1500; ++i) xml += L"<B ID='1'/>";
  XmlError error;
  XmlContent content(ParseXml(xml + L"</A>", error), 1200);
  for (const wchar_t* query : {L"A/B", L"A/B[@ID=\"1\"]"})
    EXPECT_EQ(content.Select(kDocumentNode, query, 5000).size(), 1500U);
  EXPECT_THROW(content.Select(kDocumentNode, L"A/B/C", 1), QueryError);
  EXPECT_EQ(content.Select(kDocumentNode, L"A/B", 1).size(), 1U) << "ordinary ones go on";
}

}  // namespace platform
