#include "app/rehearsal/document.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <exception>
#include <new>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "app/text/wording.h"
#include "platform/owner.h"

namespace app {
namespace {

/// Where a node stands.
enum class Place {
  kDocument,
  kRoot,
  kHle,
  kWatermark,
  kPolicies,
  kPolicy,
  kList,
  kListed,
  kScope,
  kElements,
  kElement,
  kProperty,
  kStranger,  ///< Or inside one.
};

struct Form {
  Place parent;
  std::string_view name;  ///< Empty: any.
  Place place;
  std::string_view attribute = {};  ///< The one that is read.
};

constexpr Form kForms[] = {
    {Place::kDocument, "QuietMIMOSA", Place::kRoot},
    {Place::kRoot, "HLE", Place::kHle, "Version"},
    {Place::kHle, "Watermark", Place::kWatermark},
    {Place::kWatermark, "PolicyInfos", Place::kPolicies},
    {Place::kPolicies, "PolicyInfo", Place::kPolicy, "ID"},
    {Place::kPolicy, "ElementIDs", Place::kList},
    {Place::kList, "ID", Place::kListed},
    {Place::kPolicy, "PrinterScope", Place::kScope},
    {Place::kWatermark, "Elements", Place::kElements},
    {Place::kElements, "Element", Place::kElement, "ID"},
    {Place::kElement, "", Place::kProperty},
};

std::string_view View(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

std::string_view View(const xmlChar* begin, const xmlChar* end) {
  return {reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin)};
}

void PrintNothing(void* /*context*/, const char* /*format*/, ...) {}  // NOLINT(cert-dcl50-cpp)

void FreeParser(xmlParserCtxt* parser) {
  xmlFreeParserCtxt(parser);
}

/// The element or policy of an ID, which is made with its first node.
template <class Part>
Part& PartOf(std::vector<Part>& parts, std::map<std::string, std::size_t>& places,
             const std::string& id) {
  const auto [place, isNew] = places.emplace(id, parts.size());
  if (isNew) parts.emplace_back().id = id;
  return parts[place->second];
}

/// Takes the parser's events. An exception in one is kept until the parser has returned.
class Reader {
 public:
  PolicyDocument Read(const std::string& text) {
    // libxml2 prints what no handler takes, as that the memory has ended.
    xmlSetGenericErrorFunc(nullptr, &PrintNothing);
    const Owner<xmlParserCtxt*, FreeParser> parser(
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
    return std::move(m_document);
  }

 private:
  static xmlSAXHandler Handler() {
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = [](void* self, const xmlChar* name, const xmlChar*, const xmlChar* uri,
                                int, const xmlChar**, int count, int, const xmlChar** attributes) {
      Guard(self, [&](Reader& reader) {
        reader.Start(View(name), uri == nullptr, {attributes, static_cast<std::size_t>(5 * count)});
      });
    };
    handler.endElementNs = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
      Guard(self, [](Reader& reader) { reader.End(); });
    };
    handler.characters = [](void* self, const xmlChar* text, int size) {
      Guard(self, [&](Reader& reader) {
        if (reader.m_text != nullptr) *reader.m_text += View(text, text + size);
      });
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

  struct Open {
    Place place;
    std::string name;
  };

  long Line() const { return m_parser->input == nullptr ? 0 : m_parser->input->line; }

  /// The form of a node in `parent`; null for a stranger.
  const Form* FormOf(std::string_view name, Place parent) {
    for (const Form& form : kForms) {
      if (form.parent != parent || (!form.name.empty() && form.name != name)) continue;
      // The first of these counts, whatever it holds.
      const bool isSecond = form.place == Place::kHle && std::exchange(m_hasHle, true);
      return isSecond ? nullptr : &form;
    }
    return nullptr;
  }

  /// `attributes` holds five each: name, prefix, namespace, begin and end of the value.
  void Start(std::string_view name, bool isPlain, std::span<const xmlChar*> attributes) {
    const Open parent = m_open.empty() ? Open{Place::kDocument, ""} : m_open.back();
    if (m_text != nullptr || parent.place == Place::kStranger) {
      m_open.push_back(parent);
      return;
    }
    const Form* const form = isPlain ? FormOf(name, parent.place) : nullptr;
    m_open.push_back({form == nullptr ? Place::kStranger : form->place, std::string(name)});
    if (form == nullptr) return AddStranger(std::string(name), parent.name);
    std::string id;
    for (; !attributes.empty(); attributes = attributes.subspan(5)) {
      const std::string attribute(View(attributes[0]));
      if (attributes[2] == nullptr && attribute == form->attribute)
        id = View(attributes[3], attributes[4]);
      else if (View(attributes[1]) != "xml")
        AddStranger("@" + attribute, std::string(name));
    }
    Enter(form->place, std::string(name), id);
  }

  void Enter(Place place, const std::string& name, const std::string& id) {
    if (place == Place::kElement) {
      m_element = &PartOf(m_document.elements, m_document.elementPlaces, id);
      m_element->lines.push_back(Line());
    } else if (place == Place::kPolicy) {
      m_policy = &PartOf(m_document.policies, m_document.policyPlaces, id);
      m_policy->lines.push_back(Line());
    } else if (place == Place::kListed) {
      m_text = &m_policy->listed.emplace_back(ListedId{"", Line()}).id;
    } else if (place == Place::kScope) {
      m_text = &m_policy->scopes.emplace_back(Property{name, "", Line()}).text;
    } else if (place == Place::kProperty) {
      m_text = &m_element->properties.emplace_back(Property{name, "", Line()}).text;
    } else {
      return;
    }
    m_textDepth = m_open.size();
  }

  void End() {
    if (m_text != nullptr && m_open.size() == m_textDepth) {
      if (m_open.back().place == Place::kListed) *m_text = Trimmed(*m_text);
      m_text = nullptr;
    }
    m_open.pop_back();
  }

  void AddStranger(std::string name, std::string parent) {
    m_document.strangers.push_back({std::move(name), std::move(parent), Line()});
  }

  PolicyDocument m_document;
  xmlParserCtxt* m_parser = nullptr;
  std::vector<Open> m_open;
  bool m_hasHle = false;
  PolicyElement* m_element = nullptr;  ///< The innermost ones.
  PolicyInfo* m_policy = nullptr;
  std::string* m_text = nullptr;  ///< Takes the text inside an ID, a scope or a property,
  std::size_t m_textDepth = 0;    ///< which is so many nodes deep.
  std::exception_ptr m_thrown;
};

}  // namespace

const PolicyElement* PolicyDocument::FindElement(const std::string& id) const {
  const auto found = elementPlaces.find(id);
  return found == elementPlaces.end() ? nullptr : &elements[found->second];
}

const PolicyInfo* PolicyDocument::FindPolicy(int id) const {
  const auto found = policyPlaces.find(std::to_string(id));
  return found == policyPlaces.end() ? nullptr : &policies[found->second];
}

PolicyDocument ReadDocument(const std::string& text) {
  return Reader().Read(text);
}

}  // namespace app
