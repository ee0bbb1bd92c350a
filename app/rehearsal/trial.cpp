#include "app/rehearsal/trial.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/utf.h"

namespace app {
namespace {

// Two numbers that every property tells apart, be it a text, a number or a flag.
constexpr int kFirst = 1;
constexpr int kSecond = 2;
// The numbers from 0 on that are tried of a property whose numbers stand for something.
constexpr int kMostMeanings = 16;
// Copies of properties in one trial; more take seconds.
constexpr std::size_t kMostCost = 200000;
// What is read of an element, and how, depends on this one of its properties.
constexpr char kKind[] = "Kind";

/// Lays the policy on the machine and gives the fate of each of its elements.
std::vector<Fate> Run(const TrialPolicy& policy, const std::vector<std::string>& ids,
                      const ScratchMachine& machine) {
  const std::wstring text = platform::FromUtf8(policy.Text());
  const std::vector<Registered> all =
      Match(Rehearse(machine, UpdateCall(text, TrialPolicy::kPolicyId)), ids);
  std::vector<Fate> fates;
  auto id = ids.begin();
  for (const Registered& each : all) {
    Fate& fate = fates.emplace_back();
    if (each.mark) fate = ValuesOf(*each.mark, *id);
    ++id;
  }
  return fates;
}

Effect Compare(const Fate& first, const Fate& second) {
  Effect effect;
  effect.isRead = first != second;
  effect.decides = first.has_value() != second.has_value();
  if (!first || !second) return effect;
  for (std::size_t i = 0; i < first->size(); ++i)
    if ((*first)[i] != (*second)[i]) effect.fields.push_back(i);
  if (effect.fields.size() != 1) return effect;
  const FieldValue& one = (*first)[effect.fields.front()];
  const FieldValue& two = (*second)[effect.fields.front()];
  if (const auto* text = std::get_if<std::string>(&one)) {
    const std::string number = std::to_string(kFirst);
    const std::size_t place = text->find(number);
    effect.isText = place != text->npos;
    if (effect.isText) effect.before = text->substr(0, place);
    if (effect.isText) effect.behind = text->substr(place + number.size());
  }
  effect.isNumber =
      std::holds_alternative<bool>(one) || (NumberIn(one) == kFirst && NumberIn(two) == kSecond);
  return effect;
}

}  // namespace

Fate Effect::Part(const Fate& fate) const {
  if (decides) return own;
  if (!fate) return fate;
  std::vector<FieldValue> part;
  for (const std::size_t field : fields) part.push_back((*fate)[field]);
  return part;
}

std::string Effect::TextIn(const std::vector<FieldValue>& values) const {
  std::string text = std::get<std::string>(values[fields.front()]);
  if (!text.starts_with(before) || !text.ends_with(behind)) return text;
  text.erase(0, before.size());
  text.resize(text.size() - std::min(text.size(), behind.size()));
  return text;
}

std::vector<int> Effect::Meanings() const {
  std::vector<int> meanings;
  const auto count = static_cast<int>(fates.size());
  const auto fateOf = [&](int number) -> const Fate& {
    return fates[static_cast<std::size_t>(number)];
  };
  const auto isNew = [&](int number) {
    return std::ranges::none_of(meanings,
                                [&](int known) { return fateOf(known) == fateOf(number); });
  };
  if (decides) {
    for (int number = 0; number < count; ++number)
      if (fateOf(number)) meanings.push_back(number);
    return meanings;
  }
  if (count > 1 && fateOf(0) != fateOf(1)) meanings.push_back(0);
  for (int number = 1; number < count && isNew(number); ++number) meanings.push_back(number);
  return meanings;
}

std::optional<int> Effect::MeaningOf(const Fate& fate) const {
  const Fate part = Part(fate);
  for (const int number : Meanings())
    if (fates[static_cast<std::size_t>(number)] == part) return number;
  return std::nullopt;
}

Trial::Trial(const std::vector<const PolicyElementNodes*>& elements,
             const std::set<std::string>& names) {
  m_machine.Write("machine.ini", "");
  for (const PolicyElementNodes* const element : elements) {
    for (const Property& property : element->properties) AddSubject(*element, property);
    for (const std::string& name : names)
      if (!element->counts.contains(name)) AddSubject(*element, {name, "", 0, 0, 0});
  }
  TryTwoNumbers(elements);
  TryMoreNumbers();
}

const Effect* Trial::Find(const PolicyElementNodes& element, const Property& property) const {
  const auto found = m_effects.find(KeyOf(element, property));
  return found == m_effects.end() ? nullptr : &found->second;
}

const Effect* Trial::FindLacking(const PolicyElementNodes& element, const std::string& name) const {
  return Find(element, {name, "", 0, 0, 0});
}

const Fate& Trial::FateOf(const PolicyElementNodes& element) const {
  return m_fates.at(element.id);
}

Trial::Key Trial::KeyOf(const PolicyElementNodes& element, const Property& property) {
  return {element.TextOf(kKind), property.name, property.node, property.rank};
}

void Trial::AddSubject(const PolicyElementNodes& element, const Property& property) {
  const Key key = KeyOf(element, property);
  if (m_subjects.contains(key)) return;
  const std::size_t cost = 2 * (element.properties.size() + 1);
  m_isWhole = m_isWhole && m_cost + cost <= kMostCost;
  if (!m_isWhole) return;
  m_cost += cost;
  m_subjects.insert({key, {&element, property}});
}

void Trial::TryTwoNumbers(const std::vector<const PolicyElementNodes*>& elements) {
  TrialPolicy policy;
  std::vector<std::string> ids = {policy.AddEmpty()};
  for (const PolicyElementNodes* const element : elements) ids.push_back(policy.Add(*element));
  for (const auto& [key, subject] : m_subjects)
    for (const int number : {kFirst, kSecond})
      ids.push_back(policy.Add(*subject.element, subject.property, std::to_string(number)));
  const std::vector<Fate> fates = Run(policy, ids, m_machine);
  auto fate = fates.begin();
  m_fateOfNothing = *fate++;
  for (const PolicyElementNodes* const element : elements) m_fates[element->id] = *fate++;
  for (const auto& [key, subject] : m_subjects) {
    const Fate& first = *fate++;
    const Fate& second = *fate++;
    if (!first && !second) continue;
    Effect& effect = m_effects[key] = Compare(first, second);
    effect.own = FateOf(*subject.element);
    if (effect.isRead) m_readNames.insert(subject.property.name);
  }
}

void Trial::TryMoreNumbers() {
  TrialPolicy policy;
  std::vector<std::string> ids;
  const auto standsForSomething = [](const Effect& effect) {
    return effect.isRead && !effect.isText && !effect.isNumber;
  };
  for (const auto& [key, effect] : m_effects)
    for (int number = 0; standsForSomething(effect) && number <= kMostMeanings; ++number) {
      const Subject& subject = m_subjects.at(key);
      ids.push_back(policy.Add(*subject.element, subject.property, std::to_string(number)));
    }
  if (ids.empty()) return;
  const std::vector<Fate> fates = Run(policy, ids, m_machine);
  auto fate = fates.begin();
  for (auto& [key, effect] : m_effects)
    for (int number = 0; standsForSomething(effect) && number <= kMostMeanings; ++number)
      effect.fates.push_back(effect.decides ? *fate++ : effect.Part(*fate++));
}

std::optional<double> NumberIn(const FieldValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? 1 : 0;
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  return std::nullopt;
}

}  // namespace app
