#include "app/rehearsal/document.h"

#include <libxml/parser.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace app {
namespace {

const xmlChar* Xml(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

std::string Utf8(const xmlChar* text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

void FreeText(xmlChar* text) {
  xmlFree(text);
}
using OwnedText = Owner<xmlChar*, &FreeText>;

std::string Trimmed(const std::string& text) {
  constexpr char kSpace[] = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string Content(const xmlNode* node) {
  return Utf8(OwnedText(xmlNodeGetContent(node)).Get());
}

std::string Id(xmlNode* node) {
  return Utf8(OwnedText(xmlGetNoNsProp(node, Xml("ID"))).Get());
}

bool IsPlainElement(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE && node->ns == nullptr;
}

template <class Action>
void ForEachChild(xmlNode* node, Action action) {
  for (xmlNode *child = node->children, *next = nullptr; child != nullptr; child = next) {
    next = child->next;
    if (child->type == XML_ELEMENT_NODE) action(child);
  }
}

template <class Action>
void ForEachAttribute(xmlNode* node, Action action) {
  for (xmlAttr *each = node->properties, *next = nullptr; each != nullptr; each = next) {
    next = each->next;
    const bool isOfXml = each->ns != nullptr && Utf8(each->ns->prefix) == "xml";
    if (!isOfXml) action(each);
  }
}

std::string TextOf(xmlDoc* document) {
  xmlChar* bytes = nullptr;
  int size = 0;
  xmlDocDumpMemoryEnc(document, &bytes, &size, "UTF-8");
  const OwnedText text(bytes);
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

xmlDoc* Parse(const std::string& text) {
  // What the machine's own XML service takes is taken; nothing is ever fetched.
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                           XML_PARSE_HUGE | XML_PARSE_BIG_LINES | XML_PARSE_IGNORE_ENC;
  return xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8", kOptions);
}

}  // namespace

long PolicyElementNodes::Line() const {
  return xmlGetLineNo(nodes.front());
}

std::string PolicyElementNodes::TextOf(const std::string& name) const {
  const auto found = std::ranges::find(properties, name, &Property::name);
  return found == properties.end() ? "" : Trimmed(found->text);
}

/// The nodes that a document has, by name. What stands below an element is all its own.
struct PolicyDocument::Form {
  std::string name;
  std::string attribute;
  std::vector<Form> children = {};
  bool isSingle = false;
  void (PolicyDocument::*add)(xmlNode*) = nullptr;
};

const PolicyDocument::Form& PolicyDocument::WholeForm() {
  static const Form form = {
      "QuietMIMOSA",
      "",
      {{"HLE",
        "Version",
        {{"Watermark",
          "",
          {{"PolicyInfos",
            "",
            {{"PolicyInfo",
              "ID",
              {{"ElementIDs", "", {{"ID", ""}}}, {"PrinterScope", ""}},
              false,
              &PolicyDocument::AddPolicy}}},
           {"Elements", "", {{"Element", "ID", {}, false, &PolicyDocument::AddElement}}}}}},
        true}}};
  return form;
}

PolicyDocument::PolicyDocument(const std::string& text) : m_document(Parse(text)) {
  xmlNode* const root = m_document ? xmlDocGetRootElement(m_document.Get()) : nullptr;
  if (root == nullptr) throw std::runtime_error("the policy cannot be read");
  Walk(root, WholeForm());
}

void PolicyDocument::Walk(xmlNode* node, const Form& form) {
  ForEachAttribute(node, [&](xmlAttr* each) {
    if (each->ns != nullptr || Utf8(each->name) != form.attribute)
      RemoveStranger(reinterpret_cast<xmlNode*>(each));
  });
  if (form.add == &PolicyDocument::AddElement) return AddElement(node);
  std::vector<const Form*> seen;
  ForEachChild(node, [&](xmlNode* child) {
    const auto found = std::ranges::find(form.children, Utf8(child->name), &Form::name);
    const bool isKnown = IsPlainElement(child) && found != form.children.end();
    if (!isKnown || (found->isSingle && std::ranges::find(seen, &*found) != seen.end()))
      return RemoveStranger(child);
    seen.push_back(&*found);
    Walk(child, *found);
  });
  if (form.add != nullptr) (this->*form.add)(node);
}

void PolicyDocument::RemoveStranger(xmlNode* node) {
  const bool isAttribute = node->type == XML_ATTRIBUTE_NODE;
  m_strangers.push_back({(isAttribute ? "@" : "") + Utf8(node->name), Utf8(node->parent->name),
                         xmlGetLineNo(isAttribute ? node->parent : node)});
  if (isAttribute) {
    xmlRemoveProp(reinterpret_cast<xmlAttr*>(node));
  } else {
    xmlUnlinkNode(node);
    xmlFreeNode(node);
  }
}

void PolicyDocument::AddElement(xmlNode* node) {
  const std::string id = Id(node);
  const auto [place, isNew] = m_places.emplace(id, m_elements.size());
  if (isNew) m_elements.push_back({id, {}, {}, {}});
  PolicyElementNodes& element = m_elements[place->second];
  ForEachChild(node, [&](xmlNode* child) {
    ForEachAttribute(child,
                     [&](xmlAttr* each) { RemoveStranger(reinterpret_cast<xmlNode*>(each)); });
    const std::string name = Utf8(child->name);
    if (!IsPlainElement(child)) return RemoveStranger(child);
    element.properties.push_back(
        {name, Content(child), xmlGetLineNo(child), element.nodes.size(), element.counts[name]++});
  });
  element.nodes.push_back(node);
}

void PolicyDocument::AddPolicy(xmlNode* node) {
  const std::string id = Id(node);
  auto found = std::ranges::find(m_policies, id, &PolicyNodes::id);
  if (found == m_policies.end()) found = m_policies.insert(found, {id, {}, {}, {}});
  found->lines.push_back(xmlGetLineNo(node));
  ForEachChild(node, [&](xmlNode* child) {
    if (Utf8(child->name) == "PrinterScope") {
      found->scopes.push_back({"PrinterScope", Content(child), xmlGetLineNo(child)});
      return;
    }
    ForEachChild(child, [&](xmlNode* id) {
      found->listed.push_back({Trimmed(Content(id)), xmlGetLineNo(id)});
    });
  });
}

const PolicyElementNodes* PolicyDocument::Find(const std::string& id) const {
  const auto found = m_places.find(id);
  return found == m_places.end() ? nullptr : &m_elements[found->second];
}

const PolicyNodes* PolicyDocument::FindPolicy(int id) const {
  const auto found = std::ranges::find(m_policies, std::to_string(id), &PolicyNodes::id);
  return found == m_policies.end() ? nullptr : &*found;
}

std::string PolicyDocument::TextWithoutStrangers() const {
  return app::TextOf(m_document.Get());
}

TrialPolicy::TrialPolicy() : m_document(xmlNewDoc(Xml("1.0"))) {
  xmlNode* const root = xmlNewNode(nullptr, Xml("QuietMIMOSA"));
  xmlDocSetRootElement(m_document.Get(), root);
  const auto add = [](xmlNode* parent, const char* name) {
    return xmlNewChild(parent, nullptr, Xml(name), nullptr);
  };
  xmlNode* const watermark = add(add(root, "HLE"), "Watermark");
  xmlNode* const policy = add(add(watermark, "PolicyInfos"), "PolicyInfo");
  xmlNewProp(policy, Xml("ID"), Xml(std::to_string(kPolicyId).c_str()));
  m_list = add(policy, "ElementIDs");
  m_elements = add(watermark, "Elements");
}

/// Puts a new ID on the list.
std::string TrialPolicy::List() {
  std::string id = std::to_string(++m_count);
  xmlNewChild(m_list, nullptr, Xml("ID"), Xml(id.c_str()));
  return id;
}

std::vector<xmlNode*> TrialPolicy::Copy(const PolicyElementNodes& element, const std::string& id) {
  std::vector<xmlNode*> copies;
  for (xmlNode* const node : element.nodes) {
    xmlNode* const copy = xmlDocCopyNode(node, m_document.Get(), 1);
    xmlSetProp(copy, Xml("ID"), Xml(id.c_str()));
    copies.push_back(xmlAddChild(m_elements, copy));
  }
  return copies;
}

std::string TrialPolicy::AddEmpty() {
  std::string id = List();
  xmlNode* const element = xmlNewChild(m_elements, nullptr, Xml("Element"), nullptr);
  xmlSetProp(element, Xml("ID"), Xml(id.c_str()));
  return id;
}

std::string TrialPolicy::Add(const PolicyElementNodes& element) {
  std::string id = List();
  Copy(element, id);
  return id;
}

std::string TrialPolicy::Add(const PolicyElementNodes& element, const Property& property,
                             const std::string& text) {
  std::string id = List();
  const std::vector<xmlNode*> copies = Copy(element, id);
  xmlNode* wanted = nullptr;
  std::size_t rank = 0;
  for (xmlNode* const copy : copies)
    ForEachChild(copy, [&](xmlNode* child) {
      if (Utf8(child->name) == property.name && rank++ == property.rank) wanted = child;
    });
  if (wanted == nullptr)
    wanted = xmlNewChild(copies.front(), nullptr, Xml(property.name.c_str()), nullptr);
  xmlNodeSetContent(wanted, Xml(text.c_str()));
  return id;
}

std::string TrialPolicy::Text() const {
  return app::TextOf(m_document.Get());
}

}  // namespace app
