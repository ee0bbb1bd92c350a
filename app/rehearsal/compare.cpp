#include "app/rehearsal/compare.h"

#include <algorithm>

#include "app/machine/settings.h"
#include "app/text/errors.h"
#include "app/text/wording.h"

namespace app {
namespace {

constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kListWidth = 32;
constexpr char kWatermark[] = "watermark";
constexpr char kThere[] = "there";
constexpr char kNowhere[] = "not there";

/// An element that is listed again is another one.
using MarkKey = std::pair<std::string, int>;

/// The watermarks of an entry by their elements.
struct Marks {
  std::vector<MarkKey> order;
  std::map<MarkKey, const peers::WatermarkRecord*> byKey;
  std::map<std::string, MarkKey> keyOfGuid;
};

/// A watermark is known by the ID that its name begins with, else by its name.
std::string ElementOf(const peers::WatermarkRecord& mark, const std::set<std::string>& ids) {
  for (std::size_t end = mark.name.rfind('_'); end != std::string::npos && end > 0;
       end = mark.name.rfind('_', end - 1))
    if (ids.contains(mark.name.substr(0, end))) return mark.name.substr(0, end);
  return mark.name;
}

Marks MarksOf(const peers::EntryRecord& entry, const std::set<std::string>& ids) {
  Marks marks;
  std::map<std::string, int> count;
  for (const peers::WatermarkRecord& mark : entry.watermarks) {
    const std::string element = ElementOf(mark, ids);
    const MarkKey& key = marks.order.emplace_back(element, ++count[element]);
    marks.byKey[key] = &mark;
    marks.keyOfGuid[mark.id] = key;
  }
  return marks;
}

std::string InWords(const MarkKey& key) {
  return OneLine(key.first, kNameWidth) +
         (key.second > 1 ? " (" + std::to_string(key.second) + ")" : "");
}

std::string InWords(const std::vector<MarkKey>& keys) {
  std::string names;
  for (const MarkKey& key : keys) names += (names.empty() ? "" : " ") + InWords(key);
  return names.empty() ? "none" : OneLine(names, kListWidth);
}

bool AreAlike(const peers::ActiveRecord& left, const peers::ActiveRecord& right) {
  return left.enabled == right.enabled && left.watermarks == right.watermarks;
}

/// The watermarks that a setting lists, sorted, of those that the other side has too.
std::vector<MarkKey> Listed(const peers::ActiveRecord& setting, const Marks& marks,
                            const Marks& other) {
  std::vector<MarkKey> keys;
  for (const std::string& guid : setting.watermarks) {
    const auto found = marks.keyOfGuid.find(guid);
    if (found != marks.keyOfGuid.end() && other.byKey.contains(found->second))
      keys.push_back(found->second);
  }
  std::ranges::sort(keys);
  return keys;
}

/// Gathers differences; those of one kind in several entries become one.
class Comparison {
 public:
  /// Without values, of a watermark only the name is compared, and no switch and no list.
  Comparison(const std::set<std::string>& ids, bool hasValues)
      : m_ids(ids), m_hasValues(hasValues) {}

  void CompareEntries(const peers::EntryRecord& left, const peers::EntryRecord& right) {
    const Marks before = MarksOf(left, m_ids), after = MarksOf(right, m_ids);
    CompareMarks(before, after);
    if (!m_hasValues) return;
    CompareSettings(left.lastSetting, right.lastSetting, before, after, "");
    for (const peers::ActiveRecord& custom : left.customSettings) {
      const auto other =
          std::ranges::find(right.customSettings, custom.name, &peers::ActiveRecord::name);
      // A custom setting equal to the last setting on both sides would only repeat its differences.
      const bool isAlike = other != right.customSettings.end() &&
                           AreAlike(custom, left.lastSetting) &&
                           AreAlike(*other, right.lastSetting);
      if (isAlike) continue;
      if (other == right.customSettings.end())
        Add("", "custom setting", kThere, kNowhere);
      else
        CompareSettings(custom, *other, before, after, "custom setting's ");
    }
  }

  void Add(const std::string& subject, const std::string& field, const std::string& left,
           const std::string& right) {
    const auto [place, isNew] = m_places.insert({{subject, field, left, right}, m_found.size()});
    if (isNew) m_found.push_back({{}, subject, field, left, right});
    if (!m_entry.empty()) m_found[place->second].entries.push_back(m_entry);
  }

  void SetEntry(const std::string& entry) { m_entry = entry; }
  std::vector<Difference> Take() { return std::move(m_found); }

 private:
  void CompareMarks(const Marks& left, const Marks& right) {
    std::vector<MarkKey> before, after;  // of both
    for (const MarkKey& key : left.order)
      if (right.byKey.contains(key))
        before.push_back(key);
      else
        Add(InWords(key), kWatermark, kThere, kNowhere);
    for (const MarkKey& key : right.order)
      if (left.byKey.contains(key))
        after.push_back(key);
      else
        Add(InWords(key), kWatermark, kNowhere, kThere);
    for (const MarkKey& key : before) CompareFields(key, *left.byKey.at(key), *right.byKey.at(key));
    if (before != after) Add("", "order", InWords(before), InWords(after));
  }

  void CompareFields(const MarkKey& key, peers::WatermarkRecord left,
                     const peers::WatermarkRecord& right) {
    left.id = right.id;
    if (left == right) return;
    const Json before = JsonOf(left), after = JsonOf(right);
    for (const auto& [field, value] : before.items())
      if (const Json& other = after.at(field); value != other && (m_hasValues || field == "name"))
        Add(InWords(key), field, Shown(field, value), Shown(field, other));
  }

  void CompareSettings(const peers::ActiveRecord& left, const peers::ActiveRecord& right,
                       const Marks& before, const Marks& after, const std::string& name) {
    const auto state = [](bool isOn) { return std::string(isOn ? "on" : "off"); };
    if (left.enabled != right.enabled)
      Add("", name + "switch", state(left.enabled), state(right.enabled));
    const auto one = Listed(left, before, after), two = Listed(right, after, before);
    // Without a switch that is on, a list prints nothing.
    if (left.enabled && right.enabled && one != two)
      Add("", name + "active", InWords(one), InWords(two));
  }

  const std::set<std::string>& m_ids;  ///< Of the elements that the watermarks come from.
  const bool m_hasValues;
  std::string m_entry;
  std::vector<Difference> m_found;
  std::map<std::vector<std::string>, std::size_t> m_places;
};

template <class Record, class Key>
std::map<std::string, const Record*> ByName(const std::vector<Record>& records, Key name) {
  std::map<std::string, const Record*> map;
  for (const Record& record : records) map[record.*name] = &record;
  return map;
}

std::vector<Difference> Compare(const peers::SettingFileContent& left,
                                const peers::SettingFileContent& right,
                                const std::set<std::string>& ids, bool hasValues) {
  Comparison comparison(ids, hasValues);
  const auto before = ByName(left.entries, &peers::EntryRecord::printer);
  const auto after = ByName(right.entries, &peers::EntryRecord::printer);
  for (const auto& [printer, entry] : before) {
    comparison.SetEntry(printer);
    if (const auto other = after.find(printer); other != after.end())
      comparison.CompareEntries(*entry, *other->second);
    else
      comparison.Add("", "entry", kThere, kNowhere);
  }
  for (const auto& [printer, entry] : after) {
    comparison.SetEntry(printer);
    if (!before.contains(printer)) comparison.Add("", "entry", kNowhere, kThere);
  }
  comparison.SetEntry("");
  const auto excluded = ByName(left.excluded, &peers::ExcludeRecord::name);
  const auto others = ByName(right.excluded, &peers::ExcludeRecord::name);
  for (const auto& [printer, record] : excluded)
    if (!others.contains(printer)) comparison.Add(printer, "exclude list", "on it", "not on it");
  for (const auto& [printer, record] : others)
    if (!excluded.contains(printer)) comparison.Add(printer, "exclude list", "not on it", "on it");
  return comparison.Take();
}

}  // namespace

std::vector<Difference> Compare(const Review& left, const Review& right) {
  std::set<std::string> ids = left.Ids();
  ids.merge(right.Ids());
  return Compare(left.records, right.records, ids, true);
}

std::vector<Row> RowsOf(const std::vector<Difference>& differences, std::size_t entries,
                        const std::string& left, const std::string& right) {
  constexpr std::size_t kMostEntries = 3;
  std::vector<Row> rows = {{"Entry", "Element", "Field", left, right}};
  for (const Difference& each : differences) {
    std::vector<std::string> names;
    for (const std::string& printer : each.entries)
      names.push_back(OneLine(EntryName(printer), kNameWidth));
    rows.push_back({names.size() == entries ? "all" : NamesInARow(names, kMostEntries),
                    each.subject, each.field, each.left, each.right});
  }
  return rows;
}

Force ForceOf(const Review& review) try {
  if (!review.refusal.empty())
    return {.unknown = "the passes refuse the policy: " + review.refusal};
  if (!review.failure.empty()) return {.unknown = "no pass can run here: " + review.failure};
  return {.differences = Compare(ReadSettingsOfCopy(), review.records, review.Ids(), kReadsValues),
          .entries = review.records.entries.size(),
          .excluded = review.records.excluded.size()};
} catch (const std::exception& error) {
  return {.unknown = CauseOf(error)};
}

std::vector<Row> RowsOf(const Force& force) {
  return RowsOf(force.differences, force.entries, "The record holds", "The policy asks for");
}

std::string Sentence(const Force& force) {
  if (!force.unknown.empty()) return "cannot be told: " + force.unknown;
  if (force.IsIn())
    return "in force on " + Counted(force.entries, "entry", "entries") + "; " +
           Counted(force.excluded, "printer", "printers") + " excluded" +
           (kReadsValues ? "" : ", by the names of the watermarks");
  return "not in force: " + Counted(force.differences.size(), "difference", "differences");
}

}  // namespace app
