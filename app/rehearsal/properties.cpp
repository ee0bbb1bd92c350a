#include "app/rehearsal/properties.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "app/rehearsal/fields.h"
#include "app/text/wording.h"

namespace app {
namespace {

enum class Form { kText, kReal, kFlag, kColour, kInteger, kCode };

struct PropertyRow {
  const char* name;
  bool isInHeader;  ///< It is read in a header or footer.
  bool isInStamp;
  Form form;          ///< kCode: a number that stands for something.
  const char* field;  ///< Of the record (fields.h).
};

// By name, in which order an element's lacking ones are told.
constexpr PropertyRow kRows[] = {
    {"Bold", true, true, Form::kFlag, "bold"},
    {"Color", true, true, Form::kColour, "color"},
    {"Fit", true, true, Form::kFlag, "fit"},
    {"FontName", true, true, Form::kText, "fontName"},
    {"FontSize", true, true, Form::kReal, "fontSize"},
    {"Italic", true, true, Form::kFlag, "italic"},
    {"Name", true, true, Form::kText, "name"},
    {"Opacity", true, true, Form::kInteger, "opacity"},
    {"PrintPos", true, false, Form::kCode, "printPos"},
    {"RepeatHSpace", false, true, Form::kInteger, "repeatHSpace"},
    {"RepeatType", false, true, Form::kCode, "repeatFirstAxis"},
    {"RepeatVSpace", false, true, Form::kInteger, "repeatVSpace"},
    {"Rotate", true, true, Form::kInteger, "rotate"},
    {"Text", true, true, Form::kText, "text"},
    {"UnderLine", true, true, Form::kFlag, "underLine"},
    {"XOffset", true, false, Form::kReal, "xOffset"},
    {"YOffset", true, false, Form::kReal, "yOffset"},
};

constexpr std::string_view kUser = "{WinUser}";

const std::set<std::string>& Names() {
  static const std::set<std::string> names = [] {
    std::set<std::string> all = {kKind};
    for (const PropertyRow& row : kRows) all.insert(row.name);
    return all;
  }();
  return names;
}

const PropertyRow* FindRow(const std::string& name) {
  const auto* const found =
      std::ranges::find_if(kRows, [&](const PropertyRow& row) { return name == row.name; });
  return found == std::end(kRows) ? nullptr : found;
}

const Field& FieldOf(const PropertyRow& row) {
  return *std::ranges::find_if(
      Fields(), [&](const Field& field) { return std::string_view(field.name) == row.field; });
}

/// The number in a policy that stands for this place of the page; the record counts the places row
/// by row.
std::int32_t PositionCode(std::int32_t place) {
  constexpr std::array<std::int32_t, 9> kCodes = {1, 2, 3, 7, 8, 9, 4, 5, 6};
  const auto index = static_cast<std::size_t>(place);
  return index < kCodes.size() ? kCodes[index] : 0;
}

/// The number that the record stands for, of a code.
std::int32_t CodeIn(const PropertyRow& row, const peers::WatermarkRecord& mark) {
  if (std::string_view(row.field) == "printPos") return PositionCode(mark.printPos);
  return (mark.repeatFirstAxis ? 1 : 0) + (mark.repeatSecondAxis ? 2 : 0);
}

/// Nothing for a text.
std::optional<double> NumberIn(const FieldValue& value) {
  if (const auto* flag = std::get_if<bool>(&value)) return *flag ? 1 : 0;
  if (const auto* real = std::get_if<double>(&value)) return *real;
  if (const auto* number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* colour = std::get_if<Colour>(&value)) return colour->value;
  return std::nullopt;
}

/// The "{...}" at `open`, or what looks like one that is not closed: the word.
std::string PlaceholderAt(const std::string& text, std::size_t open) {
  const std::size_t close = text.find_first_of("{}", open + 1);
  if (close != text.npos && text[close] == '}') return text.substr(open, close + 1 - open);
  return text.substr(open, text.find_first_of("{ \t\r\n", open + 1) - open);
}

/// The first ones of the text that stand in the record as well.
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

/// Whether `stored` is `written` with one text in place of each {WinUser}.
bool IsFilledIn(const std::string& written, const std::string& stored) {
  const std::size_t first = written.find(kUser);
  if (first == written.npos) return false;
  const std::size_t count = CountUsers(written);
  const std::size_t rest = written.size() - count * kUser.size();
  if (stored.size() < rest || first > stored.size()) return false;
  const std::string_view user =
      std::string_view(stored).substr(first, (stored.size() - rest) / count);
  std::string expected;
  std::size_t from = 0;
  for (std::size_t at = first; at != written.npos; at = written.find(kUser, from)) {
    expected.append(written, from, at - from).append(user);
    from = at + kUser.size();
  }
  return expected.append(written, from) == stored;
}

class PropertyReview {
 public:
  PropertyReview(const PolicyElement& element, const Registered& registered, Remarks& findings,
                 Remarks& notes)
      : m_element(element),
        m_mark(*registered.mark),
        m_isStamp(registered.isStamp),
        m_findings(findings),
        m_notes(notes) {}

  void Run() {
    for (const Property& property : m_element.properties) {
      const auto [first, isFirst] = m_firsts.emplace(property.name, property.line);
      const PropertyRow* const row = FindRow(property.name);
      if (row == nullptr ? property.name != kKind : !IsRead(*row))
        ReviewUnread(property, row);
      else if (!isFirst)
        Find("unread", property,
             "nobody reads it: the one of line " + std::to_string(first->second) + " counts");
      else if (row == nullptr)
        ReviewNumber(property, Form::kCode, KindCode());
      else if (row->form == Form::kText)
        ReviewText(property, *row);
      else
        ReviewNumber(property, row->form, ValueOf(*row));
    }
    for (const std::string& name : Names()) ReviewLacking(name);
  }

 private:
  bool IsRead(const PropertyRow& row) const { return m_isStamp ? row.isInStamp : row.isInHeader; }
  std::int32_t KindCode() const { return m_isStamp ? 1 : 0; }

  /// A name without the ID that it begins with, a code in the policy's number.
  FieldValue ValueOf(const PropertyRow& row) const {
    if (row.form == Form::kCode) return CodeIn(row, m_mark);
    FieldValue value = FieldOf(row).get(m_mark);
    if (std::string_view(row.field) == "name")
      std::get<std::string>(value).erase(0, m_element.id.size() + 1);
    return value;
  }

  void ReviewUnread(const Property& property, const PropertyRow* row) {
    if (!m_findings.HasRoom("unread")) return;
    std::string message = "nobody reads it";
    if (row != nullptr)
      message += " in an element of this Kind";
    else if (const std::string guess = Guess(property.name, Names()); !guess.empty())
      message += "; is " + guess + " meant?";
    Find("unread", property, message);
  }

  void ReviewText(const Property& property, const PropertyRow& row) {
    const std::string stored = std::get<std::string>(ValueOf(row));
    const std::string change = Quoted(property.text) + " became " + Quoted(stored);
    if (property.text.empty())
      Find("zero", property, "it is empty");
    else if (stored != property.text && IsFilledIn(property.text, stored))
      m_notes.Add({"filled", m_element.id, property.name, property.line, change + " here"});
    else if (stored != property.text)
      m_findings.Add({IsBlank(stored) ? "zero" : "changed", m_element.id, property.name,
                      property.line, change, Quoted(property.text), Quoted(stored)});
    for (const std::string& placeholder : Unfilled(property.text, stored))
      m_notes.Add({"unfilled", m_element.id, property.name, property.line,
                   Quoted(placeholder) + " stays as it is written; only {WinUser} in a Text is "
                                         "filled in"});
  }

  void ReviewNumber(const Property& property, Form form, const FieldValue& value) {
    const std::optional<double> number = NumberOf(Trimmed(property.text));
    if (number && number == NumberIn(value)) return;
    const std::string written = NumberOrQuoted(property.text);
    const std::string became = Shown(value);
    const bool isZero = !number && (form == Form::kCode || NumberIn(value) == 0);
    const std::string message = IsBlank(property.text) ? "it is empty, which reads as " + became
                                : form == Form::kCode  ? written + " counts as " + became
                                : isZero               ? written + " reads as " + became
                                                       : written + " became " + became;
    m_findings.Add({isZero ? "zero" : "changed", m_element.id, property.name, property.line,
                    message, property.text, became});
  }

  /// A property that is read, and that the element has not.
  void ReviewLacking(const std::string& name) {
    const PropertyRow* const row = FindRow(name);
    if (m_firsts.contains(name) || (row != nullptr && !IsRead(*row)) || !m_notes.HasRoom("lacking"))
      return;
    const std::string became = Shown(row == nullptr ? FieldValue(KindCode()) : ValueOf(*row));
    m_notes.Add({"lacking", m_element.id, name, m_element.lines.front(),
                 "it is not there, which reads as " + became, "", became});
  }

  void Find(const char* kind, const Property& property, const std::string& message) {
    m_findings.Add({kind, m_element.id, property.name, property.line, message});
  }

  const PolicyElement& m_element;
  const peers::WatermarkRecord& m_mark;
  const bool m_isStamp;
  Remarks& m_findings;
  Remarks& m_notes;
  std::map<std::string_view, long> m_firsts;  ///< The line of the first property of each name.
};

}  // namespace

std::size_t CountUsers(const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(kUser); at != text.npos; at = text.find(kUser, at + kUser.size()))
    ++count;
  return count;
}

void ReviewProperties(const PolicyElement& element, const Registered& registered, Remarks& findings,
                      Remarks& notes) {
  PropertyReview(element, registered, findings, notes).Run();
}

}  // namespace app
