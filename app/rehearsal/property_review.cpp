#include "app/rehearsal/property_review.h"

#include <algorithm>
#include <set>

#include "app/text/wording.h"

namespace app {
namespace {

/// The "{...}" at `open`, or what looks like one that is not closed: the word.
std::string PlaceholderAt(const std::string& text, std::size_t open) {
  const std::size_t close = text.find_first_of("{}", open + 1);
  if (close != text.npos && text[close] == '}') return text.substr(open, close + 1 - open);
  return text.substr(open, text.find_first_of("{ \t\r\n", open + 1) - open);
}

/// The first ones of what is written that stand in the record as well.
std::set<std::string> Unfilled(const std::string& written, const std::string& stored) {
  constexpr std::size_t kMost = 3;
  std::set<std::string> seen;
  std::set<std::string> unfilled;
  for (std::size_t open = written.find('{'); open != written.npos && unfilled.size() < kMost;
       open = written.find('{', open + 1)) {
    const std::string placeholder = PlaceholderAt(written, open);
    if (seen.insert(placeholder).second && stored.find(placeholder) != stored.npos)
      unfilled.insert(placeholder);
  }
  return unfilled;
}

/// Whether `stored` is `written` with other text in place of what stands in braces.
bool IsFilledIn(const std::string& written, const std::string& stored) {
  std::size_t at = 0;
  std::size_t place = 0;
  bool hasPlaceholder = false;
  for (std::size_t open; (open = written.find('{', at)) != std::string::npos;) {
    const std::size_t close = written.find('}', open);
    if (close == std::string::npos) break;
    const std::string piece = written.substr(at, open - at);
    const std::size_t found = stored.find(piece, place);
    if (found == std::string::npos || (at == 0 && found != 0)) return false;
    place = found + piece.size();
    at = close + 1;
    hasPlaceholder = true;
  }
  const std::string rest = written.substr(at);
  return hasPlaceholder && stored.size() >= place + rest.size() && stored.ends_with(rest);
}

}  // namespace

void PropertyReview::Run(const PolicyElementNodes& element, const std::vector<FieldValue>& values) {
  m_element = &element;
  m_values = &values;
  for (const Property& property : element.properties) {
    const Effect* const effect = m_trial.Find(element, property);
    if (effect == nullptr) continue;
    if (!effect->isRead)
      ReviewUnread(property);
    else if (effect->isText)
      ReviewText(property, *effect);
    else
      ReviewNumber(property, *effect);
  }
  ReviewLacking();
}

void PropertyReview::ReviewUnread(const Property& property) {
  std::string message = "nobody reads it";
  if (property.rank > 0) {
    const auto first = std::ranges::find(m_element->properties, property.name, &Property::name);
    message += ": the one of line " + std::to_string(first->line) + " counts";
  } else if (m_trial.ReadNames().contains(property.name)) {
    message += " in an element of this Kind";
  } else if (const std::string guess = Guess(property.name, m_trial.ReadNames()); !guess.empty()) {
    message += "; is " + guess + " meant?";
  }
  m_remarks.findings.push_back(Tell("unread", property, message));
}

void PropertyReview::ReviewText(const Property& property, const Effect& effect) {
  const std::string stored = effect.TextIn(*m_values);
  const std::string change = Quoted(property.text) + " became " + Quoted(stored);
  if (property.text.empty())
    m_remarks.findings.push_back(Tell("zero", property, "it is empty"));
  else if (stored != property.text && IsFilledIn(property.text, stored))
    m_remarks.notes.push_back(
        {"filled", m_element->id, property.name, property.line, change + " here"});
  else if (stored != property.text)
    m_remarks.findings.push_back({IsBlank(stored) ? "zero" : "changed", m_element->id,
                                  property.name, property.line, change, Quoted(property.text),
                                  Quoted(stored)});
  for (const std::string& placeholder : Unfilled(property.text, stored))
    m_remarks.notes.push_back(Tell("unfilled", property,
                                   Quoted(placeholder) +
                                       " stays as it is written; only {WinUser} in a Text is "
                                       "filled in"));
}

void PropertyReview::ReviewNumber(const Property& property, const Effect& effect) {
  const std::string written = NumberOrQuoted(property.text);
  const std::optional<double> number = NumberOf(Trimmed(property.text));
  if (number && IsStored(*number, effect)) return;
  const std::string became = Became(effect);
  const bool isZero =
      !number && (!effect.isNumber || NumberIn((*m_values)[effect.fields.front()]) == 0);
  const std::string message = IsBlank(property.text) ? "it is empty, which reads as " + became
                              : !effect.isNumber     ? written + " counts as " + became
                              : isZero               ? written + " reads as " + became
                                                     : written + " became " + became;
  m_remarks.findings.push_back({isZero ? "zero" : "changed", m_element->id, property.name,
                                property.line, message, property.text, became});
}

/// What nobody writes here, although it would be read.
void PropertyReview::ReviewLacking() {
  for (const std::string& name : m_trial.ReadNames()) {
    if (m_element->counts.contains(name)) continue;
    const Effect* const effect = m_trial.FindLacking(*m_element, name);
    if (effect == nullptr || !effect->isRead) continue;
    const std::string became = Became(*effect);
    m_remarks.notes.push_back({"lacking", m_element->id, name, m_element->Line(),
                               "it is not there, which reads as " + became, "", became});
  }
}

/// Whether the record holds what the number says.
bool PropertyReview::IsStored(double number, const Effect& effect) const {
  if (effect.isNumber) return NumberIn((*m_values)[effect.fields.front()]) == number;
  const std::vector<int> meanings = effect.Meanings();
  const auto meaning = std::ranges::find(meanings, number);
  return meaning != meanings.end() &&
         effect.fates[static_cast<std::size_t>(*meaning)] == effect.Part(*m_values);
}

std::string PropertyReview::Became(const Effect& effect) const {
  if (effect.isText) return Quoted(effect.TextIn(*m_values));
  if (effect.isNumber) {
    const std::size_t field = effect.fields.front();
    return Shown(Fields()[field], (*m_values)[field]);
  }
  const std::optional<int> meaning = effect.MeaningOf(*m_values);
  return meaning ? std::to_string(*meaning) : "something else";
}

Finding PropertyReview::Tell(const char* kind, const Property& property,
                             const std::string& message) const {
  return {kind, m_element->id, property.name, property.line, message};
}

}  // namespace app
