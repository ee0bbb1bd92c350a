#include "app/rehearsal/document.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "app/text/wording.h"

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
  kStranger,  ///< Or inside one, or inside a text.
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

/// Makes a document of a parser's events.
class Builder : public DocumentEvents {
 public:
  void Start(const std::string& name, bool isPlain, const std::vector<Attribute>& attributes,
             long line) override {
    const auto [parent, parentName] = m_open.empty() ? Node{Place::kDocument, ""} : m_open.back();
    const bool isInside = m_text != nullptr || parent == Place::kStranger;
    const Form* const form = isPlain && !isInside ? FormOf(name, parent) : nullptr;
    m_open.emplace_back(form == nullptr ? Place::kStranger : form->place, name);
    if (isInside) return;
    if (form == nullptr) {
      document.strangers.push_back({name, parentName, line});
      return;
    }
    std::string id;
    for (const Attribute& each : attributes)
      if (each.isPlain && each.name == form->attribute)
        id = each.value;
      else
        document.strangers.push_back({"@" + each.name, name, line});
    Enter(form->place, name, id, line);
  }

  void AddText(std::string_view text) override {
    if (m_text != nullptr) *m_text += text;
  }

  void End() override {
    const Place place = m_open.back().first;
    if (place == Place::kListed && m_text != nullptr) *m_text = Trimmed(*m_text);
    if (place != Place::kStranger) m_text = nullptr;
    m_open.pop_back();
  }

  PolicyDocument document;

 private:
  using Node = std::pair<Place, std::string>;

  /// The form of a node in `parent`; null for a stranger.
  const Form* FormOf(const std::string& name, Place parent) {
    const auto* const form = std::ranges::find_if(kForms, [&](const Form& each) {
      return each.parent == parent && (each.name.empty() || each.name == name);
    });
    if (form == std::end(kForms)) return nullptr;
    // The first of these counts, whatever it holds.
    const bool isSecond = form->place == Place::kHle && std::exchange(m_hasHle, true);
    return isSecond ? nullptr : form;
  }

  void Enter(Place place, const std::string& name, const std::string& id, long line) {
    const auto take = [&](std::vector<Property>& list) {
      m_text = &list.emplace_back(Property{name, "", line}).text;
    };
    if (place == Place::kElement || place == Place::kPolicy) {
      m_part = &(place == Place::kElement ? document.elements : document.policies).Of(id);
      m_part->lines.push_back(line);
    } else if (place == Place::kListed) {
      take(m_part->listed);
    } else if (place == Place::kScope || place == Place::kProperty) {
      take(m_part->properties);
    }
  }

  std::vector<Node> m_open;
  bool m_hasHle = false;
  PolicyPart* m_part = nullptr;   ///< The one that was begun last.
  std::string* m_text = nullptr;  ///< Takes the text inside an ID, a scope or a property.
};

}  // namespace

const PolicyPart* PolicyParts::Find(const std::string& id) const {
  const auto found = m_places.find(id);
  return found == m_places.end() ? nullptr : &m_parts[found->second];
}

PolicyPart& PolicyParts::Of(const std::string& id) {
  const auto [place, isNew] = m_places.emplace(id, m_parts.size());
  if (isNew) m_parts.push_back({id});
  return m_parts[place->second];
}

PolicyDocument ReadDocument(const std::string& text) {
  Builder builder;
  ParseDocument(text, builder);
  return std::move(builder.document);
}

}  // namespace app
