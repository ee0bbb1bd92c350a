#include "platform/posix/xml/xml_tree.h"

#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>

#include "platform/utf.h"

namespace platform {

namespace {

constexpr int kMaxDepth = 256;  // MSXML 6.0's

// Limits that MSXML does not have and no policy needs. Text and nodes bound the memory that a
// document takes.
constexpr std::size_t kMaxBytes = std::size_t{16} << 20;
constexpr NodeId kMaxNodes = 1'000'000;

// The parser's work grows with the square of these.
constexpr int kMaxAttributes = 1000;
constexpr int kMaxDeclarationsInScope = 1000;
constexpr int kMaxStrings = 10'000;  // names, prefixes and namespaces

constexpr bool IsSpace(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

template <typename Text>
XmlError ErrorAt(const Text& text, std::size_t at, const wchar_t* reason) {
  const auto lines = std::ranges::count(text.substr(0, at), '\n');
  return {static_cast<std::int32_t>(1 + lines), reason};
}

/// Rejects two inputs on which libxml2 is quadratic: an element with very many attributes, and two
/// hyphens in a comment, after which it reads on. Text with another fault may be misjudged, but the
/// parser refuses it in any case.
XmlError FindTrap(std::string_view xml) {
  std::size_t at = 0;
  const auto skipTo = [&](std::string_view mark) { return (at = xml.find(mark, at)) != xml.npos; };
  while (skipTo("<")) {
    const std::string_view rest = xml.substr(at);
    if (rest.starts_with("<!--")) {
      at += 4;
      if (skipTo("--") && !xml.substr(at).starts_with("-->"))
        return ErrorAt(xml, at, L"Two hyphens stand in a comment.");
    } else if (rest.starts_with("<![CDATA[")) {
      skipTo("]]>");
    } else if (rest.starts_with("<?")) {
      skipTo("?>");
    } else {
      for (int values = 0; at < xml.size() && xml[at] != '>'; ++at) {
        const char quote = xml[at];
        if (quote != '"' && quote != '\'') continue;
        if (++values > kMaxAttributes)
          return ErrorAt(xml, at, L"An element has too many attributes.");
        at = std::min(xml.find(quote, at + 1), xml.size() - 1);
      }
    }
    if (at == xml.npos) break;
  }
  return {};
}

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string_view View(const xmlChar* begin, std::ptrdiff_t size) {
  return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(size)};
}

void FreeParser(xmlParserCtxt* parser) {
  xmlFreeParserCtxt(parser);
}

/// Takes this thread's errors of the parser to `handler` while it lives: those of its beginning,
/// which the parser would print, and those that a handler of the host process would take away.
class ErrorsTo {
 public:
  ErrorsTo(void* self, xmlStructuredErrorFunc handler) { xmlSetStructuredErrorFunc(self, handler); }
  ErrorsTo(const ErrorsTo&) = delete;
  ErrorsTo& operator=(const ErrorsTo&) = delete;
  ~ErrorsTo() { xmlSetStructuredErrorFunc(m_self, m_handler); }

 private:
  void* m_self = xmlStructuredErrorContext;
  xmlStructuredErrorFunc m_handler = xmlStructuredError;
};

}  // namespace

XmlTree::XmlTree() {
  m_nodes.push_back({.firstChild = 1, .end = 1});
}

/// Takes the parser's events. Their exceptions are kept until the parser has returned.
class XmlTreeBuilder {
 public:
  explicit XmlTreeBuilder(XmlError& error) : m_error(error) {}

  XmlTree Build(const std::string& xml) {
    const ErrorsTo errors(this, [](void* self, xmlErrorPtr error) {
      Guard(self, [&](XmlTreeBuilder& builder) { builder.TakeError(*error); });
    });
    const Owner<xmlParserCtxt*, FreeParser> parser(
        xmlCreateMemoryParserCtxt(xml.data(), static_cast<int>(xml.size())));
    if (!parser) throw std::bad_alloc();
    m_parser = parser.Get();
    // XML_PARSE_NOENT replaces `&amp;` and its like; no other entity can be declared.
    // XML_PARSE_OLD10 restricts the version to 1.0.
    xmlCtxtUseOptions(m_parser, XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE |
                                    XML_PARSE_OLD10 | XML_PARSE_IGNORE_ENC);
    *m_parser->sax = Handler();
    m_parser->userData = this;
    m_tree.m_dictionary = Owner<xmlDict*, xmlDictFree>(m_parser->dict);
    xmlDictReference(m_parser->dict);
    m_tree.m_texts.reserve(xml.size());
    xmlParseDocument(m_parser);
    if (m_thrown) std::rethrow_exception(m_thrown);
    if (!m_parser->wellFormed) Note("The text is not well-formed.");
    if (m_error.line != 0) return XmlTree();
    m_tree.m_nodes[kDocumentNode].end = m_tree.Size();
    return std::move(m_tree);
  }

 private:
  static xmlSAXHandler Handler() {
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.internalSubset = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
      Guard(self, [](XmlTreeBuilder& builder) { builder.Refuse("DTD is prohibited."); });
    };
    handler.startElementNs = [](void* self, const xmlChar* local, const xmlChar* prefix,
                                const xmlChar* uri, int declarationCount,
                                const xmlChar** declarations, int attributeCount, int,
                                const xmlChar** attributes) {
      Guard(self, [&](XmlTreeBuilder& builder) {
        builder.StartElement(local, prefix, uri);
        for (int i = 0; i < attributeCount; ++i) builder.AddAttribute(attributes + 5 * i);
        for (int i = 0; i < declarationCount; ++i)
          builder.AddDeclaration(declarations[2 * i], View(declarations[2 * i + 1]));
      });
    };
    handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
      Guard(self, [](XmlTreeBuilder& builder) { builder.EndElement(); });
    };
    handler.characters = [](void* self, const xmlChar* text, int size) {
      Guard(self, [&](XmlTreeBuilder& builder) { builder.AddText(View(text, size)); });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = [](void* self, const xmlChar* text, int size) {
      Guard(self, [&](XmlTreeBuilder& builder) { builder.AddSection(View(text, size)); });
    };
    handler.comment = [](void* self, const xmlChar*) {
      Guard(self, [](XmlTreeBuilder& builder) { builder.EndText(); });
    };
    handler.processingInstruction = [](void* self, const xmlChar*, const xmlChar*) {
      Guard(self, [](XmlTreeBuilder& builder) { builder.EndText(); });
    };
    return handler;
  }

  template <typename Action>
  static void Guard(void* self, Action action) {
    auto& builder = *static_cast<XmlTreeBuilder*>(self);
    if (builder.m_thrown) return;
    try {
      action(builder);
    } catch (...) {
      builder.m_thrown = std::current_exception();
    }
  }

  void TakeError(const xmlError& error) {
    if (error.code == XML_ERR_NO_MEMORY) throw std::bad_alloc();
    // That a namespace's name is no URI troubles nobody.
    if (error.level < XML_ERR_ERROR || error.code == XML_WAR_NS_URI ||
        error.code == XML_WAR_NS_URI_RELATIVE || m_error.line != 0)
      return;
    m_error = {std::max(error.line, 1), FromUtf8(error.message == nullptr ? "" : error.message)};
    // Stops the parser. xmlStopParser would also free the text, from which the caller still
    // reports.
    m_parser->instate = XML_PARSER_EOF;
    m_parser->disableSAX = 1;
  }

  void Note(std::string_view reason) {
    if (m_error.line != 0) return;
    const int line = m_parser->input == nullptr ? 0 : m_parser->input->line;
    m_error = {std::max(line, 1), FromUtf8(reason)};
  }

  void Refuse(std::string_view reason) {
    Note(reason);
    xmlStopParser(m_parser);
  }

  XmlNode& Last() { return m_tree.m_nodes.back(); }

  NodeId Add(NodeKind kind) {
    const NodeId id = m_tree.Size();
    if (id == kMaxNodes) Refuse("The document has more than 1,000,000 nodes.");
    m_tree.m_nodes.push_back({.parent = m_open,
                              .firstChild = id + 1,
                              .end = id + 1,
                              .begin = static_cast<std::uint32_t>(m_tree.m_texts.size()),
                              .kind = kind});
    return id;
  }

  /// More text for the last node.
  void Append(std::string_view text) {
    m_tree.m_texts += text;
    Last().size += static_cast<std::uint32_t>(text.size());
  }

  /// The parser's dictionary has the parts of a name already.
  XmlName Qualified(const xmlChar* prefix, const xmlChar* local) {
    if (prefix == nullptr) return local;
    const XmlName name = xmlDictQLookup(m_parser->dict, prefix, local);
    if (name == nullptr) throw std::bad_alloc();
    return name;
  }

  void StartElement(const xmlChar* local, const xmlChar* prefix, const xmlChar* uri) {
    EndText();
    if (++m_depth > kMaxDepth) Refuse("The elements are nested too deeply.");
    if (m_parser->nsNr / 2 > kMaxDeclarationsInScope) Refuse("There are too many namespaces.");
    if (xmlDictSize(m_parser->dict) > kMaxStrings) Refuse("There are too many different names.");
    const bool keepsSpace = m_tree[m_open].keepsSpace;
    m_open = Add(NodeKind::kElement);
    m_lastChild = kNoNode;
    Last().name = Qualified(prefix, local);
    Last().isInNamespace = uri != nullptr;
    Last().keepsSpace = keepsSpace;
  }

  void AddAttribute(XmlName name, bool isInNamespace, std::string_view value) {
    const NodeId id = Add(NodeKind::kAttribute);
    Last().name = name;
    Last().isInNamespace = isInNamespace;
    m_tree.m_nodes[m_open].firstChild = id + 1;
    Append(value);
  }

  /// Local name, prefix, namespace, and the value from its begin to its end.
  void AddAttribute(const xmlChar* const* parts) {
    const std::string_view value = View(parts[3], parts[4] - parts[3]);
    AddAttribute(Qualified(parts[1], parts[0]), parts[2] != nullptr, value);
    if (View(Last().name) != "xml:space") return;
    XmlNode& element = m_tree.m_nodes[m_open];
    element.keepsSpace = value == "preserve" || (element.keepsSpace && value != "default");
  }

  void AddDeclaration(const xmlChar* prefix, std::string_view uri) {
    static const xmlChar kXmlns[] = "xmlns";
    AddAttribute(prefix == nullptr ? kXmlns : Qualified(kXmlns, prefix), true, uri);
  }

  void EndElement() {
    EndText();
    --m_depth;
    m_tree.m_nodes[m_open].end = m_tree.Size();
    m_lastChild = m_open;
    m_open = m_tree[m_open].parent;
  }

  void AddText(std::string_view text) {
    if (!m_isInText) Add(NodeKind::kText);
    m_isInText = true;
    Append(text);
  }

  void AddSection(std::string_view text) {
    EndText();
    m_lastChild = Add(NodeKind::kSection);
    Append(text);
  }

  /// A text of white space alone is dropped, unless it is to be kept.
  void EndText() {
    if (!m_isInText) return;
    m_isInText = false;
    const NodeId id = m_tree.Size() - 1;
    if (m_tree[m_open].keepsSpace || !std::ranges::all_of(m_tree.Text(id), IsSpace)) {
      m_lastChild = id;
      return;
    }
    m_tree.m_texts.resize(Last().begin);
    m_tree.m_nodes.pop_back();
    if (m_lastChild == kNoNode)
      m_tree.m_nodes[m_open].isSpaceInside = true;
    else
      m_tree.m_nodes[m_lastChild].isSpaceBehind = true;
  }

  XmlError& m_error;
  XmlTree m_tree;
  xmlParserCtxt* m_parser = nullptr;
  NodeId m_open = kDocumentNode;  // the element that the events are in,
  NodeId m_lastChild = kNoNode;   // and the last of its children so far
  int m_depth = 0;
  bool m_isInText = false;
  std::exception_ptr m_thrown;
};

std::size_t FindHalfCharacter(std::wstring_view text) {
  const auto isHigh = [](wchar_t unit) { return static_cast<char32_t>(unit) >= 0xD800; };
  for (std::size_t at = 0;;) {
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(at);
    at = static_cast<std::size_t>(std::find_if(begin, text.end(), isHigh) - text.begin());
    std::wstring_view rest = text.substr(at);
    if (rest.empty()) return at;
    const char32_t code = TakeCodePoint(rest);
    if (code < 0xE000 || code > 0x10FFFF) return at;
    at = text.size() - rest.size();
  }
}

XmlTree ParseXml(std::wstring_view xml, XmlError& error) {
  constexpr wchar_t kByteOrderMark = L'\uFEFF';
  // One mark belongs to the encoding. The parser would take a second one for its own.
  if (xml.starts_with(kByteOrderMark)) xml.remove_prefix(1);
  error = {};
  if (xml.empty()) {
    error = {1, L"XML document must have a top level element."};
  } else if (xml.starts_with(kByteOrderMark)) {
    error = {1, L"Invalid at the top level of the document."};
  } else if (const std::size_t at = FindHalfCharacter(xml); at < xml.size()) {
    error = ErrorAt(xml, at, L"An invalid character was found in text content.");
  } else if (const std::string utf8 = ToUtf8(xml); utf8.size() > kMaxBytes) {
    error = {1, L"The text has more than 16 MiB."};
  } else if (error = FindTrap(utf8); error.line == 0) {
    return XmlTreeBuilder(error).Build(utf8);
  }
  return XmlTree();
}

}  // namespace platform
