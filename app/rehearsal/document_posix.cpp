#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <exception>
#include <new>
#include <span>
#include <stdexcept>

#include "app/rehearsal/document.h"
#include "platform/owner.h"

namespace app {
namespace {

std::string Text(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

void PrintNothing(void* /*context*/, const char* /*format*/, ...) {}  // NOLINT(cert-dcl50-cpp)

/// Takes the parser's events. An exception in one is kept until the parser has returned.
class Reader {
 public:
  explicit Reader(DocumentEvents& events) : m_events(events) {}

  void Read(const std::string& text) {
    // libxml2 prints what no handler takes, as that the memory has ended.
    xmlSetGenericErrorFunc(nullptr, &PrintNothing);
    const Owner<xmlParserCtxt*, xmlFreeParserCtxt> parser(
        xmlCreateMemoryParserCtxt(text.data(), static_cast<int>(text.size())));
    if (!parser) throw std::bad_alloc();
    m_parser = parser.Get();
    // The machine's XML service reads with the same options.
    xmlCtxtUseOptions(m_parser, XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE |
                                    XML_PARSE_OLD10 | XML_PARSE_IGNORE_ENC);
    *m_parser->sax = Handler();
    m_parser->userData = this;
    xmlParseDocument(m_parser);
    if (m_thrown) std::rethrow_exception(m_thrown);
    if (m_parser->errNo == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    if (m_parser->wellFormed == 0) throw std::runtime_error("the policy cannot be read");
  }

 private:
  static xmlSAXHandler Handler() {
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = [](void* self, const xmlChar* name, const xmlChar*, const xmlChar* uri,
                                int, const xmlChar**, int count, int, const xmlChar** attributes) {
      Guard(self, [&](Reader& reader) {
        reader.Start(Text(name), uri == nullptr, {attributes, static_cast<std::size_t>(5 * count)});
      });
    };
    handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
      Guard(self, [](Reader& reader) { reader.m_events.End(); });
    };
    handler.characters = [](void* self, const xmlChar* text, int size) {
      const std::string_view view(reinterpret_cast<const char*>(text),
                                  static_cast<std::size_t>(size));
      Guard(self, [&](Reader& reader) { reader.m_events.AddText(view); });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = handler.characters;
    handler.serror = [](void*, xmlErrorPtr) {};
    return handler;
  }

  template <class Action>
  static void Guard(void* self, Action action) {
    auto& reader = *static_cast<Reader*>(self);
    if (reader.m_thrown) return;
    try {
      action(reader);
    } catch (...) {
      reader.m_thrown = std::current_exception();
      xmlStopParser(reader.m_parser);
    }
  }

  /// `attributes` holds five each: name, prefix, namespace, begin and end of the value.
  void Start(const std::string& name, bool isPlain, std::span<const xmlChar*> attributes) {
    std::vector<DocumentEvents::Attribute> list;
    for (; !attributes.empty(); attributes = attributes.subspan(5))
      if (Text(attributes[1]) != "xml")
        list.push_back({Text(attributes[0]), std::string(attributes[3], attributes[4]),
                        attributes[2] == nullptr});
    m_events.Start(name, isPlain, list, m_parser->input == nullptr ? 0 : m_parser->input->line);
  }

  DocumentEvents& m_events;
  xmlParserCtxt* m_parser = nullptr;
  std::exception_ptr m_thrown;
};

}  // namespace

void ParseDocument(const std::string& text, DocumentEvents& events) {
  Reader(events).Read(text);
}

}  // namespace app
