// The properties of an element, and what became of each in the watermark's record.
//
// One table says which property fills which field, of which kind, in which form and range. The
// values come from the record alone.

#include <algorithm>
#include <iterator>

#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "app/rehearsal/review.h"
#include "app/text/wording.h"

namespace app {
namespace {

enum class Form {
  kText,
  kNumber,
  kCode,  ///< A number that stands for something.
};

struct PropertyRow {
  const char* name;
  bool isInHeader;  ///< It is read in a header or footer.
  bool isInStamp;
  Form form;
  const char* field;      ///< Of the record's JSON; empty for Kind, which has none.
  const char* rule = "";  ///< As an author has to write a number.
};

constexpr char kFlag[] = "1 is on, anything else off";

// Sorted by name. The notes list the properties that an element lacks in this order.
constexpr PropertyRow kRows[] = {
    {"Bold", true, true, Form::kNumber, "bold", kFlag},
    {"Color", true, true, Form::kNumber, "color",
     "a whole number, or 0x and hexadecimal digits, 0 to 0xFFFFFF"},
    {"Fit", true, true, Form::kNumber, "fit", kFlag},
    {"FontName", true, true, Form::kText, "fontName"},
    {"FontSize", true, true, Form::kNumber, "fontSize", "a real number, above 0, to 200"},
    {"Italic", true, true, Form::kNumber, "italic", kFlag},
    {"Kind", true, true, Form::kCode, "", "0 or 1"},
    {"Name", true, true, Form::kText, "name"},
    {"Opacity", true, true, Form::kNumber, "opacity", "a whole number, 0 to 100"},
    {"PrintPos", true, false, Form::kCode, "printPos", "1 to 9"},
    {"RepeatHSpace", false, true, Form::kNumber, "repeatHSpace", "a whole number, -1000 to 1000"},
    {"RepeatType", false, true, Form::kCode, "repeatFirstAxis", "0 to 3"},
    {"RepeatVSpace", false, true, Form::kNumber, "repeatVSpace", "a whole number, -1000 to 1000"},
    {"Rotate", true, true, Form::kNumber, "rotate", "a whole number, 0 to 359"},
    {"Text", true, true, Form::kText, "text"},
    {"UnderLine", true, true, Form::kNumber, "underLine", kFlag},
    {"XOffset", true, false, Form::kNumber, "xOffset", "a real number, -1000 to 1000"},
    {"YOffset", true, false, Form::kNumber, "yOffset", "a real number, -1000 to 1000"},
};

std::set<std::string> PropertyNames() {
  std::set<std::string> names;
  for (const PropertyRow& row : kRows) names.insert(row.name);
  return names;
}

const PropertyRow* FindRow(const std::string& name) {
  const auto* const found =
      std::ranges::find_if(kRows, [&](const PropertyRow& row) { return name == row.name; });
  return found == std::end(kRows) ? nullptr : found;
}

/// A number in a policy that stands for something else in the record.
struct Code {
  std::int32_t number;
  std::string meaning;
};

/// Returns the code that gives this record.
Code CodeIn(const PropertyRow& row, const peers::WatermarkRecord& mark, bool isStamp) {
  // The record counts the places of the page row by row.
  constexpr std::int32_t kPlaces[] = {1, 2, 3, 7, 8, 9, 4, 5, 6};
  constexpr const char* kAxes[] = {"not repeated", "along the first axis", "along the second axis",
                                   "along both axes"};
  if (*row.field == '\0') return isStamp ? Code{1, "a stamp"} : Code{0, "a header or footer"};
  if (std::string_view(row.field) == "printPos") {
    const auto place = static_cast<std::size_t>(mark.printPos);
    return {place < std::size(kPlaces) ? kPlaces[place] : 0, PositionText(mark.printPos)};
  }
  const int axes = (mark.repeatFirstAxis ? 1 : 0) + (mark.repeatSecondAxis ? 2 : 0);
  return {axes, kAxes[axes]};
}

constexpr std::string_view kUser = "{WinUser}";

/// Returns the "{...}" at `open`; where it is not closed, the text up to the next blank.
std::string PlaceholderAt(const std::string& text, std::size_t open) {
  const std::size_t close = text.find_first_of("{}", open + 1);
  if (close != text.npos && text[close] == '}') return text.substr(open, close + 1 - open);
  return text.substr(open, text.find_first_of("{ \t\r\n", open + 1) - open);
}

/// Returns the texts in braces that stand in the record as in the policy, and no more than some.
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

/// Returns the user's name where `stored` is `written` with one name in place of each {WinUser}.
std::optional<std::string> UserIn(const std::string& written, const std::string& stored) {
  const std::size_t first = written.find(kUser);
  if (first == written.npos) return std::nullopt;
  const std::size_t count = CountUsers(written);
  const std::size_t rest = written.size() - count * kUser.size();
  if (stored.size() < rest || first > stored.size()) return std::nullopt;
  std::string user = stored.substr(first, (stored.size() - rest) / count);
  std::string expected;
  std::size_t from = 0;
  for (std::size_t at = first; at != written.npos; at = written.find(kUser, from)) {
    expected.append(written, from, at - from).append(user);
    from = at + kUser.size();
  }
  if (expected.append(written, from) != stored) return std::nullopt;
  return user;
}

/// Nothing for a text.
std::optional<double> NumberIn(const Json& value) {
  if (value.is_string()) return std::nullopt;
  return value.is_boolean() ? value.get<bool>() : value.get<double>();
}

class PropertyReview {
 public:
  PropertyReview(const PolicyPart& element, const ElementFate& fate, Review& review)
      : m_element(element),
        m_mark(*fate.mark),
        m_fields(JsonOf(m_mark)),
        m_isStamp(fate.isStamp),
        m_findings(review.findings),
        m_notes(review.notes) {}

  void Run() {
    for (const Property& property : m_element.properties) {
      const auto [first, isFirst] = m_firsts.emplace(property.name, property.line);
      const PropertyRow* const row = FindRow(property.name);
      if (row == nullptr || !IsRead(*row))
        ReviewUnread(property, row);
      else if (!isFirst)
        ReviewSecond(property, first->second);
      else if (row->form == Form::kText)
        ReviewText(property, *row);
      else
        ReviewNumber(property, *row);
    }
    for (const PropertyRow& row : kRows) ReviewLacking(row);
  }

 private:
  bool IsRead(const PropertyRow& row) const { return m_isStamp ? row.isInStamp : row.isInHeader; }

  /// A name without the ID that it begins with, a code in the policy's number.
  Json ValueOf(const PropertyRow& row) const {
    if (row.form == Form::kCode) return CodeIn(row, m_mark, m_isStamp).number;
    if (std::string_view(row.field) == "name")
      return std::string(m_mark.name).erase(0, m_element.id.size() + 1);
    return m_fields.at(row.field);
  }

  void ReviewUnread(const Property& property, const PropertyRow* row) {
    if (!m_findings.HasRoom("unread")) return;
    std::string message = "nobody reads it";
    if (row != nullptr)
      message += " in an element of this Kind";
    else if (const std::string guess = Guess(property.name, PropertyNames()); !guess.empty())
      message += "; is " + guess + " meant?";
    Add("unread", property, message);
  }

  /// Reports a property of a name that the element has already. In another node of the same ID it
  /// is a note, because that node is a finding already.
  void ReviewSecond(const Property& property, long first) {
    const auto nodeOf = [&](long line) { return std::ranges::upper_bound(m_element.lines, line); };
    const std::string message = Superseded(first, property.line);
    if (nodeOf(first) == nodeOf(property.line))
      Add("unread", property, message);
    else
      m_notes.Add({"second", message, property.line, m_element.id, property.name});
  }

  void ReviewText(const Property& property, const PropertyRow& row) {
    const std::string stored = ValueOf(row).get<std::string>();
    const std::string change =
        Quoted(property.text) == Quoted(stored)
            ? "it is cut, or loses white space at an end: " + std::to_string(property.text.size()) +
                  " bytes became " + std::to_string(stored.size())
            : Quoted(property.text) + " became " + Quoted(stored);
    if (property.text.empty())
      Add("zero", property, "it is empty");
    else if (const auto user = UserIn(property.text, stored); user && stored != property.text)
      ReviewUser(property, *user, change);
    else if (stored != property.text)
      m_findings.Add({IsBlank(stored) ? "zero" : "changed", change, property.line, m_element.id,
                      property.name, Quoted(property.text), Quoted(stored)});
    for (const std::string& placeholder : Unfilled(property.text, stored))
      Add("unfilled", property,
          Quoted(placeholder) + " stays as it is written; only {WinUser} in a Text is filled in");
  }

  void ReviewUser(const Property& property, const std::string& user, const std::string& change) {
    m_notes.Add({"filled", change + " here", property.line, m_element.id, property.name});
    if (const std::string name = NameBefore(user); !name.empty())
      Add("lost", property,
          "the user's name " + Quoted(name) + " became " + Quoted(user) +
              " in a user information file that is not UTF-16; remove that file");
  }

  void ReviewNumber(const Property& property, const PropertyRow& row) {
    const Json value = ValueOf(row);
    const std::optional<double> number = NumberOf(Trimmed(property.text));
    if (number && number == NumberIn(value)) return;
    const bool isCode = row.form == Form::kCode;
    const std::string written = NumberOrQuoted(property.text);
    const std::string became = Shown(row.field, value);
    const bool isZero = !number && (isCode || NumberIn(value) == 0);
    std::string message = IsBlank(property.text) ? "it is empty, which reads as " + became
                          : isCode               ? written + " counts as " + became
                          : isZero               ? written + " reads as " + became
                                                 : written + " became " + became;
    if (isCode) message += ", " + CodeIn(row, m_mark, m_isStamp).meaning;
    m_findings.Add({isZero ? "zero" : "changed", message + "; " + row.rule, property.line,
                    m_element.id, property.name, property.text, became});
  }

  /// Reports a property that the pass reads and the element lacks.
  void ReviewLacking(const PropertyRow& row) {
    if (m_firsts.contains(row.name) || !IsRead(row) || !m_notes.HasRoom("lacking")) return;
    const std::string became = Shown(row.field, ValueOf(row));
    m_notes.Add({"lacking", "it is not there, which reads as " + became, m_element.lines.front(),
                 m_element.id, row.name, "", became});
  }

  void Add(const char* kind, const Property& property, const std::string& message) {
    m_findings.Add({kind, message, property.line, m_element.id, property.name});
  }

  const PolicyPart& m_element;
  const peers::WatermarkRecord& m_mark;
  const Json m_fields;  ///< Of the record.
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

void ReviewProperties(const PolicyPart& element, const ElementFate& fate, Review& review) {
  PropertyReview(element, fate, review).Run();
}

}  // namespace app
