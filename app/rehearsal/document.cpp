#include "app/rehearsal/document.h"

#include <algorithm>
#include <iterator>

#include "app/text/wording.h"

namespace app {
namespace {

/// The element or policy of an ID, which is made with its first node.
template <class Part>
Part& PartOf(std::vector<Part>& parts, std::map<std::string, std::size_t>& places,
             const std::string& id) {
  const auto [place, isNew] = places.emplace(id, parts.size());
  if (isNew) parts.emplace_back().id = id;
  return parts[place->second];
}

}  // namespace

/// Where a node stands.
enum class DocumentBuilder::Place {
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

struct DocumentBuilder::Form {
  Place parent;
  std::string_view name;  ///< Empty: any.
  Place place;
  std::string_view attribute = {};  ///< The one that is read.
};

/// The form of a node in `parent`; null for a stranger.
const DocumentBuilder::Form* DocumentBuilder::FormOf(const std::string& name, Place parent) {
  static constexpr Form kForms[] = {
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
  const auto* const form = std::ranges::find_if(kForms, [&](const Form& each) {
    return each.parent == parent && (each.name.empty() || each.name == name);
  });
  if (form == std::end(kForms)) return nullptr;
  // The first of these counts, whatever it holds.
  const bool isSecond = form->place == Place::kHle && std::exchange(m_hasHle, true);
  return isSecond ? nullptr : form;
}

void DocumentBuilder::Start(const std::string& name, bool isPlain,
                            const std::vector<Attribute>& attributes, long line) {
  const Open parent = m_open.empty() ? Open{Place::kDocument, ""} : m_open.back();
  if (m_text != nullptr || parent.place == Place::kStranger) {
    m_open.push_back(parent);
    return;
  }
  const Form* const form = isPlain ? FormOf(name, parent.place) : nullptr;
  m_open.push_back({form == nullptr ? Place::kStranger : form->place, name});
  if (form == nullptr) {
    m_document.strangers.push_back({name, parent.name, line});
    return;
  }
  std::string id;
  for (const Attribute& each : attributes) {
    if (each.isPlain && each.name == form->attribute)
      id = each.value;
    else if (!each.isXml)
      m_document.strangers.push_back({"@" + each.name, name, line});
  }
  Enter(form->place, name, id, line);
}

void DocumentBuilder::Enter(Place place, const std::string& name, const std::string& id,
                            long line) {
  if (place == Place::kElement) {
    m_element = &PartOf(m_document.elements, m_document.elementPlaces, id);
    m_element->lines.push_back(line);
  } else if (place == Place::kPolicy) {
    m_policy = &PartOf(m_document.policies, m_document.policyPlaces, id);
    m_policy->lines.push_back(line);
  } else if (place == Place::kListed) {
    m_text = &m_policy->listed.emplace_back(ListedId{"", line}).id;
  } else if (place == Place::kScope) {
    m_text = &m_policy->scopes.emplace_back(Property{name, "", line}).text;
  } else if (place == Place::kProperty) {
    m_text = &m_element->properties.emplace_back(Property{name, "", line}).text;
  } else {
    return;
  }
  m_textDepth = m_open.size();
}

void DocumentBuilder::End() {
  if (m_text != nullptr && m_open.size() == m_textDepth) {
    if (m_open.back().place == Place::kListed) *m_text = Trimmed(*m_text);
    m_text = nullptr;
  }
  m_open.pop_back();
}

const PolicyElement* PolicyDocument::FindElement(const std::string& id) const {
  const auto found = elementPlaces.find(id);
  return found == elementPlaces.end() ? nullptr : &elements[found->second];
}

const PolicyInfo* PolicyDocument::FindPolicy(int id) const {
  const auto found = policyPlaces.find(std::to_string(id));
  return found == policyPlaces.end() ? nullptr : &policies[found->second];
}

}  // namespace app
