#include "platform/posix/xml/xml_tree.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <climits>
#include <exception>
#include <functional>
#include <memory>
#include <new>

#include "platform/base.h"
#include "platform/utf.h"

namespace platform {

namespace {

constexpr std::size_t kMaxDepth = 256;  // MSXML 6.0's

// The parser's work grows with the square of these. MSXML knows no limit, but no document needs as
// many.
constexpr int kMaxAttributes = 1000;
constexpr int kMaxDeclarationsInScope = 1000;
constexpr int kMaxStrings = 10'000;  // names, prefixes and namespaces

constexpr std::int32_t Code(std::uint32_t code) {
  return static_cast<std::int32_t>(code);
}
constexpr std::int32_t kBadCharacter = Code(0xC00CE508U);
constexpr std::int32_t kInvalidAtTopLevel = Code(0xC00CE556U);
constexpr std::int32_t kNoTopElement = Code(0xC00CE558U);
constexpr std::int32_t kEndTagMismatch = Code(0xC00CE56DU);
constexpr std::int32_t kDtdProhibited = Code(0xC00CE584U);

std::int32_t CodeOf(int parserError) {
  switch (parserError) {
    case XML_ERR_DOCUMENT_EMPTY:
      return kNoTopElement;
    case XML_ERR_DOCUMENT_END:
      return kInvalidAtTopLevel;
    case XML_ERR_TAG_NAME_MISMATCH:
      return kEndTagMismatch;
    case XML_ERR_INVALID_CHAR:
      return kBadCharacter;
    default:
      return E_FAIL;
  }
}

constexpr bool IsSpace(wchar_t unit) {
  return unit == L' ' || unit == L'\t' || unit == L'\n' || unit == L'\r';
}

/// Where `text` has its first unit that stands for no character of XML; its end if it has none.
std::size_t FindBadUnit(std::wstring_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto unit = static_cast<std::uint32_t>(text[i]);  // NOLINT(bugprone-signed-char-misuse)
    if (unit >= 0x20 && unit < 0xD800) continue;
    if (unit < 0x20) {
      if (!IsSpace(text[i])) return i;
    } else if (unit < 0xDC00) {
      const auto next = i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) : 0;
      if (next < 0xDC00 || next > 0xDFFF) return i;
      ++i;
    } else if (unit < 0xE000 || unit == 0xFFFE || unit == 0xFFFF || unit > 0x10FFFF) {
      return i;
    }
  }
  return text.size();
}

template <typename Text>
XmlError ErrorAt(const Text& text, std::size_t at, std::int32_t code, const wchar_t* reason) {
  const auto lines = std::ranges::count(text.substr(0, at), '\n');
  return {code, static_cast<std::int32_t>(1 + lines), reason};
}

XmlError FindBadCharacter(std::wstring_view xml) {
  const std::size_t at = FindBadUnit(xml);
  if (at == xml.size()) return {};
  return ErrorAt(xml, at, kBadCharacter, L"An invalid character was found in text content.");
}

/// A fault in the text that the parser must not meet, since it would go on too long after it: most
/// of all a document type declaration. What is not well-formed otherwise may be misjudged, and is
/// refused in any case.
XmlError FindTrap(std::string_view xml) {
  std::size_t at = 0;
  const auto skipTo = [&](std::string_view mark) { return (at = xml.find(mark, at)) != xml.npos; };
  const auto trap = [&](std::int32_t code, const wchar_t* reason) {
    return ErrorAt(xml, at, code, reason);
  };
  if (xml.empty()) return trap(kNoTopElement, L"XML document must have a top level element.");
  if (xml.size() > INT_MAX) return trap(E_OUTOFMEMORY, L"The text is too large.");
  while (skipTo("<")) {
    const std::string_view rest = xml.substr(at);
    if (rest.starts_with("<!DOCTYPE")) return trap(kDtdProhibited, L"DTD is prohibited.");
    if (rest.starts_with("<!--")) {
      at += 4;
      // The parser copies the comment for each such pair.
      if (skipTo("--") && !xml.substr(at).starts_with("-->"))
        return trap(E_FAIL, L"Two hyphens stand in a comment.");
    } else if (rest.starts_with("<![CDATA[")) {
      skipTo("]]>");
    } else if (rest.starts_with("<?")) {
      skipTo("?>");
    } else {
      for (int values = 0; (at = xml.find_first_of("\"'>", at)) != xml.npos && xml[at] != '>';) {
        if (++values > kMaxAttributes) return trap(E_FAIL, L"An element has too many attributes.");
        const char quote = xml[at++];
        if (!skipTo({&quote, 1})) return {};
        ++at;
      }
    }
    if (at == xml.npos) return {};
  }
  return {};
}

const xmlChar kXmlns[] = "xmlns";
const xmlChar kXmlnsUri[] = "http://www.w3.org/2000/xmlns/";

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

}  // namespace

XmlTree::XmlTree() {
  m_nodes.push_back({kNoNode, 1, 1, 0, 0, 0, NodeKind::kDocument});
}

std::uint32_t XmlTree::FindName(std::wstring_view name) const {
  const auto found = m_plainNames.find(name);
  return found == m_plainNames.end() ? kNoName : found->second;
}

/// Takes the parser's events. What one throws is kept until the parser has returned.
class XmlTreeBuilder {
 public:
  explicit XmlTreeBuilder(XmlError& error) : m_error(error) {}

  XmlTree Build(const std::string& xml) {
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(
        xmlCreateMemoryParserCtxt(xml.data(), static_cast<int>(xml.size())), &xmlFreeParserCtxt);
    if (parser == nullptr) throw std::bad_alloc();
    m_parser = parser.get();
    // XML_PARSE_NOENT only has the parser hand over `&amp;` as what it stands for: no entity can be
    // declared. XML_PARSE_OLD10 makes it know version 1.0 alone.
    xmlCtxtUseOptions(m_parser, XML_PARSE_NOENT | XML_PARSE_NONET | XML_PARSE_HUGE |
                                    XML_PARSE_OLD10 | XML_PARSE_IGNORE_ENC);
    *m_parser->sax = Handler();
    m_parser->userData = this;
    xmlParseDocument(m_parser);
    if (m_thrown) std::rethrow_exception(m_thrown);
    if (m_error.code == 0 && !m_parser->wellFormed) Note(E_FAIL, "The text is not well-formed.");
    if (m_error.code != 0) return XmlTree();
    m_tree.m_nodes[kDocumentNode].end = m_tree.Size();
    return std::move(m_tree);
  }

 private:
  struct Open {
    NodeId id;
    NodeId lastChild;
    bool keepsSpace;
  };
  struct NameKey {
    const xmlChar* local;
    const xmlChar* prefix;
    const xmlChar* uri;
    bool operator==(const NameKey&) const = default;
  };
  struct NameHash {
    std::size_t operator()(const NameKey& key) const {
      const std::hash<const void*> hash;
      return hash(key.local) ^ (hash(key.prefix) << 1) ^ (hash(key.uri) << 2);
    }
  };

  static xmlSAXHandler Handler() {
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = [](void* self, const xmlChar* local, const xmlChar* prefix,
                                const xmlChar* uri, int declarationCount,
                                const xmlChar** declarations, int attributeCount, int,
                                const xmlChar** attributes) {
      Guard(self, [&](XmlTreeBuilder& builder) {
        builder.StartElement({local, prefix, uri});
        for (int i = 0; i < attributeCount; ++i) builder.AddAttribute(attributes + 5 * i);
        for (int i = 0; i < declarationCount; ++i)
          builder.AddDeclaration(declarations[2 * i], declarations[2 * i + 1]);
      });
    };
    handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
      Guard(self, [](XmlTreeBuilder& builder) { builder.EndElement(); });
    };
    handler.characters = [](void* self, const xmlChar* text, int size) {
      Guard(self, [&](XmlTreeBuilder& builder) {
        builder.AddText({reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
      });
    };
    handler.ignorableWhitespace = handler.characters;
    handler.cdataBlock = [](void* self, const xmlChar* text, int size) {
      Guard(self, [&](XmlTreeBuilder& builder) {
        builder.AddChild(NodeKind::kSection,
                         {reinterpret_cast<const char*>(text), static_cast<std::size_t>(size)});
      });
    };
    handler.comment = [](void* self, const xmlChar* text) {
      Guard(self,
            [&](XmlTreeBuilder& builder) { builder.AddChild(NodeKind::kComment, View(text)); });
    };
    handler.processingInstruction = [](void* self, const xmlChar* target, const xmlChar* text) {
      Guard(self, [&](XmlTreeBuilder& builder) {
        const NodeId id = builder.AddChild(NodeKind::kInstruction, View(text));
        builder.m_tree.m_nodes[id].name = builder.Number({target, nullptr, nullptr});
      });
    };
    handler.serror = [](void* self, xmlErrorPtr error) {
      Guard(self, [&](XmlTreeBuilder& builder) { builder.TakeError(*error); });
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
    // That a namespace's name is no URI troubles nobody.
    if (error.level < XML_ERR_ERROR || error.code == XML_WAR_NS_URI ||
        error.code == XML_WAR_NS_URI_RELATIVE)
      return;
    if (m_error.code != 0) return;
    m_error = {CodeOf(error.code), error.line,
               FromUtf8(error.message == nullptr ? "" : error.message)};
    // The parser would go on to look for more. What xmlStopParser does besides this would take the
    // text away from the function that reports.
    m_parser->instate = XML_PARSER_EOF;
    m_parser->disableSAX = 1;
  }

  void Note(std::int32_t code, std::string_view reason) {
    if (m_error.code != 0) return;
    m_error = {code, m_parser->input == nullptr ? 0 : m_parser->input->line, FromUtf8(reason)};
  }

  void Refuse(std::int32_t code, std::string_view reason) {
    Note(code, reason);
    xmlStopParser(m_parser);
  }

  /// The parser has each string only once, so that its address tells it.
  std::uint32_t Number(const NameKey& key) {
    const auto [entry, isNew] =
        m_numbers.try_emplace(key, static_cast<std::uint32_t>(m_tree.m_names.size()));
    if (!isNew) return entry->second;
    XmlName& name = m_tree.m_names.emplace_back();
    if (key.prefix != nullptr) name.qualified = FromUtf8(View(key.prefix)) + L':';
    name.prefixSize = static_cast<std::uint32_t>(name.qualified.size());
    name.qualified += FromUtf8(View(key.local));
    name.uri = FromUtf8(View(key.uri));
    if (name.uri.empty()) m_tree.m_plainNames.emplace(name.qualified, entry->second);
    return entry->second;
  }

  NodeId Add(NodeKind kind) {
    if (xmlDictSize(m_parser->dict) > kMaxStrings)
      Refuse(E_FAIL, "There are too many different names.");
    const NodeId id = m_tree.Size();
    m_tree.m_nodes.push_back({m_open.back().id, id + 1, id + 1, 0,
                              static_cast<std::uint32_t>(m_tree.m_texts.size()), 0, kind});
    return id;
  }

  NodeId AddAttribute(NodeKind kind, const NameKey& name, std::string_view value) {
    const NodeId id = Add(kind);
    m_tree.m_nodes[id].name = Number(name);
    m_tree.m_nodes[m_open.back().id].firstChild = id + 1;
    Append(value);
    return id;
  }

  /// More text for the last node.
  void Append(std::string_view text) {
    std::wstring& texts = m_tree.m_texts;
    const std::size_t size = texts.size();
    texts.resize(size + text.size());
    texts.resize(size + DecodeUtf8(text, texts.data() + size, text.size()));
    XmlNode& node = m_tree.m_nodes.back();
    node.size = static_cast<std::uint32_t>(texts.size()) - node.begin;
  }

  NodeId AddChild(NodeKind kind, std::string_view text) {
    EndText();
    const NodeId id = Add(kind);
    Append(text);
    m_open.back().lastChild = id;
    return id;
  }

  void StartElement(const NameKey& name) {
    EndText();
    if (m_open.size() > kMaxDepth) Refuse(E_FAIL, "The elements are nested too deeply.");
    if (m_parser->nsNr / 2 > kMaxDeclarationsInScope)
      Refuse(E_FAIL, "There are too many namespaces.");
    const NodeId id = Add(NodeKind::kElement);
    m_tree.m_nodes[id].name = Number(name);
    m_tree.m_nodes[id].keepsSpace = m_open.back().keepsSpace;
    m_open.push_back({id, kNoNode, m_open.back().keepsSpace});
  }

  void AddDeclaration(const xmlChar* prefix, const xmlChar* uri) {
    AddAttribute(NodeKind::kDeclaration,
                 prefix == nullptr ? NameKey{kXmlns, nullptr, kXmlnsUri}
                                   : NameKey{prefix, kXmlns, kXmlnsUri},
                 View(uri));
  }

  /// Local name, prefix, namespace, and the value from its begin to its end.
  void AddAttribute(const xmlChar* const* parts) {
    const NodeId id = AddAttribute(
        NodeKind::kAttribute, {parts[0], parts[1], parts[2]},
        {reinterpret_cast<const char*>(parts[3]), static_cast<std::size_t>(parts[4] - parts[3])});
    if (m_tree.Name(id).qualified != L"xml:space") return;
    Open& element = m_open.back();
    if (m_tree.Text(id) == L"preserve") element.keepsSpace = true;
    if (m_tree.Text(id) == L"default") element.keepsSpace = false;
    m_tree.m_nodes[element.id].keepsSpace = element.keepsSpace;
  }

  void EndElement() {
    EndText();
    const NodeId id = m_open.back().id;
    m_tree.m_nodes[id].end = m_tree.Size();
    m_open.pop_back();
    m_open.back().lastChild = id;
  }

  void AddText(std::string_view text) {
    if (!m_isInText) Add(NodeKind::kText);
    m_isInText = true;
    Append(text);
  }

  /// A text of white space alone is dropped, unless it is to be kept.
  void EndText() {
    if (!m_isInText) return;
    m_isInText = false;
    Open& element = m_open.back();
    const NodeId id = m_tree.Size() - 1;
    if (element.keepsSpace || !std::ranges::all_of(m_tree.Text(id), IsSpace)) {
      element.lastChild = id;
      return;
    }
    m_tree.m_texts.resize(m_tree.m_nodes[id].begin);
    m_tree.m_nodes.pop_back();
    if (element.lastChild == kNoNode)
      m_tree.m_nodes[element.id].isSpaceInside = true;
    else
      m_tree.m_nodes[element.lastChild].isSpaceBehind = true;
  }

  XmlError& m_error;
  XmlTree m_tree;
  xmlParserCtxt* m_parser = nullptr;
  std::vector<Open> m_open = {{kDocumentNode, kNoNode, false}};
  std::unordered_map<NameKey, std::uint32_t, NameHash> m_numbers;
  bool m_isInText = false;
  std::exception_ptr m_thrown;
};

XmlTree ParseXml(std::wstring_view xml, XmlError& error) {
  if (xml.starts_with(L'\uFEFF')) xml.remove_prefix(1);
  error = FindBadCharacter(xml);
  if (error.code != 0) return XmlTree();
  const std::string utf8 = ToUtf8(xml);
  error = FindTrap(utf8);
  if (error.code != 0) return XmlTree();
  return XmlTreeBuilder(error).Build(utf8);
}

}  // namespace platform
