// The reader's queries on documents of 10 to 10,000 watermark elements, beside the XPath of libxml2
// and of pugixml on the same document with the same queries. Nobody caches an answer or a query.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "platform/utf.h"
#include "policy/watermark_policy_xml_parser.h"

namespace {

constexpr const char* kChildren[] = {
    "Kind",     "Name",    "Text",      "FontSize",   "FontName",     "Color",
    "Bold",     "Italic",  "UnderLine", "Fit",        "Opacity",      "Rotate",
    "PrintPos", "XOffset", "YOffset",   "RepeatType", "RepeatHSpace", "RepeatVSpace"};

std::string Document(std::int64_t elements) {
  std::string ids;
  std::string all;
  for (std::int64_t i = 0; i < elements; ++i) {
    const std::string id = "E" + std::to_string(i);
    ids += "<ID>" + id + "</ID>";
    all += "\n<Element ID=\"" + id + "\">";
    for (const char* const name : kChildren)
      all += "\n  <" + std::string(name) + ">" + std::to_string(i) + "</" + name + ">";
    all += "\n</Element>";
  }
  return "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID=\"1\"><ElementIDs>" + ids +
         "</ElementIDs></PolicyInfo></PolicyInfos><Elements>" + all +
         "</Elements></Watermark></HLE></QuietMIMOSA>";
}

// Queries for the children of elements that lie scattered over the document.
constexpr std::int64_t kQueries = 64;

std::string Id(std::int64_t query, std::int64_t elements) {
  constexpr std::int64_t kStride = 7919;
  return "E" + std::to_string(query * kStride % elements);
}

std::string Child(std::int64_t query) {
  return kChildren[static_cast<std::size_t>(query) % std::size(kChildren)];
}

std::vector<std::string> Queries(std::int64_t elements) {
  std::vector<std::string> queries;
  for (std::int64_t i = 0; i < kQueries; ++i)
    queries.push_back("./Watermark/Elements/Element[@ID=\"" + Id(i, elements) + "\"]/" + Child(i));
  return queries;
}

/// A reader with a document of that many elements.
class Reader {
 public:
  explicit Reader(std::int64_t elements) {
    CWatermarkPolicyXMLParser::GetInstance()->SetXmlData(
        platform::FromUtf8(Document(elements)).c_str());
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { CWatermarkPolicyXMLParser::DeleteInstance(); }
  CWatermarkPolicyXMLParser* operator->() const { return CWatermarkPolicyXMLParser::GetInstance(); }
};

void QueryReader(benchmark::State& state) {
  const Reader reader(state.range(0));
  std::vector<std::pair<CString, CString>> queries;
  for (std::int64_t i = 0; i < kQueries; ++i)
    queries.emplace_back(platform::FromUtf8(Id(i, state.range(0))).c_str(),
                         platform::FromUtf8(Child(i)).c_str());
  std::size_t next = 0;
  for (auto _ : state) {
    const auto& [id, name] = queries[next++ % queries.size()];
    benchmark::DoNotOptimize(reader->GetWatermarkElement(id, name).GetLength());
  }
}

void QueryLibxml2(benchmark::State& state) {
  const std::string xml = Document(state.range(0));
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
      xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", XML_PARSE_NOBLANKS),
      &xmlFreeDoc);
  const std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
      xmlXPathNewContext(document.get()), &xmlXPathFreeContext);
  context->node = xmlDocGetRootElement(document.get())->children;
  const auto queries = Queries(state.range(0));
  std::size_t next = 0;
  for (auto _ : state) {
    xmlXPathObject* const found = xmlXPathEvalExpression(
        reinterpret_cast<const xmlChar*>(queries[next++ % queries.size()].c_str()), context.get());
    xmlChar* const text = xmlNodeGetContent(found->nodesetval->nodeTab[0]);
    benchmark::DoNotOptimize(text);
    xmlFree(text);
    xmlXPathFreeObject(found);
  }
}

void QueryPugixml(benchmark::State& state) {
  pugi::xml_document document;
  document.load_string(Document(state.range(0)).c_str());
  const pugi::xml_node root = document.child("QuietMIMOSA").child("HLE");
  const auto queries = Queries(state.range(0));
  std::size_t next = 0;
  for (auto _ : state) {
    const pugi::xpath_node found = root.select_node(queries[next++ % queries.size()].c_str());
    const std::string text = found.node().text().get();
    benchmark::DoNotOptimize(text.data());
  }
}

/// All the element IDs of a policy.
void ListReader(benchmark::State& state) {
  const Reader reader(state.range(0));
  for (auto _ : state) {
    std::vector<CString> ids;
    reader->GetPolicyInfo(1, ids);
    benchmark::DoNotOptimize(ids.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// With the first query, which makes the index.
void LoadReader(benchmark::State& state) {
  const Reader reader(state.range(0));
  const CString xml = platform::FromUtf8(Document(state.range(0))).c_str();
  for (auto _ : state) {
    reader->SetXmlData(xml);
    benchmark::DoNotOptimize(reader->GetWatermarkElement(L"E1", L"Kind").GetLength());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void LoadLibxml2(benchmark::State& state) {
  const std::string xml = Document(state.range(0));
  for (auto _ : state)
    xmlFreeDoc(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", XML_PARSE_NOBLANKS));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(QueryReader)->RangeMultiplier(10)->Range(10, 10'000);
BENCHMARK(QueryLibxml2)->RangeMultiplier(10)->Range(10, 10'000);
BENCHMARK(QueryPugixml)->RangeMultiplier(10)->Range(10, 10'000);
BENCHMARK(ListReader)->RangeMultiplier(10)->Range(10, 10'000);
BENCHMARK(LoadReader)->RangeMultiplier(10)->Range(10, 10'000);
BENCHMARK(LoadLibxml2)->RangeMultiplier(10)->Range(10, 10'000);
