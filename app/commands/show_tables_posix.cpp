#include <algorithm>
#include <cstdio>
#include <map>
#include <ostream>

#include "app/commands/show.h"
#include "app/machine/position.h"
#include "app/machine/settings.h"
#include "app/text/table.h"

namespace app {
namespace {

constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kTextWidth = 36;

std::string OnOff(bool on) {
  return on ? "on" : "off";
}

std::string Number(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

std::string Color(std::int32_t color) {
  char text[16];
  std::snprintf(text, sizeof text, "%06X", static_cast<unsigned>(color));
  return text;
}

std::string Style(const peers::WatermarkRecord& mark) {
  std::string style;
  const auto add = [&style](bool isSet, const char* word) {
    if (isSet) style += (style.empty() ? "" : " ") + std::string(word);
  };
  add(mark.bold, "bold");
  add(mark.italic, "italic");
  add(mark.underLine, "underlined");
  add(mark.fit, "fitted");
  return style;
}

std::string Repeat(const peers::WatermarkRecord& mark) {
  if (!mark.repeatFirstAxis && !mark.repeatSecondAxis) return "";
  const std::string axes = mark.repeatFirstAxis && mark.repeatSecondAxis ? "both axes"
                           : mark.repeatFirstAxis                        ? "first axis"
                                                                         : "second axis";
  return axes + " " + std::to_string(mark.repeatHSpace) + ", " + std::to_string(mark.repeatVSpace);
}

std::string Active(const peers::ActiveRecord& setting, const peers::EntryRecord& entry) {
  return std::to_string(CountActive(setting, entry)) + " of " +
         std::to_string(entry.watermarks.size());
}

void ShowLists(std::ostream& out, const peers::SettingFileContent& content) {
  out << "Content log: " << OnOff(content.contentLog) << "\n";
  const auto list = [&out](const char* title, const std::vector<std::string>& names) {
    out << title << (names.empty() ? ": none\n" : ":\n");
    for (const std::string& name : names) out << "  " << OneLine(name) << "\n";
  };
  const auto namesOf = [](const std::vector<peers::ExcludeRecord>& records) {
    std::vector<std::string> names;
    for (const peers::ExcludeRecord& record : records) names.push_back(record.name);
    return names;
  };
  list("Exclude list", namesOf(content.excluded));
  if (!content.secondExcluded.empty()) list("Second exclude list", namesOf(content.secondExcluded));
  if (!content.drivers.empty()) list("Drivers with settings of their own", content.drivers);
}

void ShowEntries(std::ostream& out, const std::vector<const peers::EntryRecord*>& entries) {
  std::vector<Row> rows = {{"Entry", "Setting", "Switch", "Active watermarks"}};
  for (const peers::EntryRecord* entry : entries) {
    const peers::ActiveRecord& last = entry->lastSetting;
    rows.push_back({NameOf(*entry), "last", OnOff(last.enabled), Active(last, *entry)});
    for (const peers::ActiveRecord& custom : entry->customSettings)
      rows.push_back({"", "custom " + OneLine(custom.name, kNameWidth), OnOff(custom.enabled),
                      Active(custom, *entry)});
  }
  out << "Entries, of which the last setting is in effect:\n";
  PrintTable(out, rows);
}

using Group = std::vector<const peers::EntryRecord*>;

/// Those that hold the same watermarks, but for their IDs, in the order of their first ones.
std::vector<Group> Grouped(const Group& entries) {
  std::vector<Group> groups;
  std::map<std::vector<peers::WatermarkRecord>, std::size_t> places;
  for (const peers::EntryRecord* entry : entries) {
    std::vector<peers::WatermarkRecord> watermarks = entry->watermarks;
    for (peers::WatermarkRecord& mark : watermarks) mark.id.clear();
    const auto [place, isNew] = places.emplace(std::move(watermarks), groups.size());
    if (isNew) groups.emplace_back();
    groups[place->second].push_back(entry);
  }
  return groups;
}

std::string NamesOf(const Group& group) {
  constexpr std::size_t kGreatestList = 8;
  std::vector<std::string> names;
  for (const peers::EntryRecord* entry : group) names.push_back(OneLine(NameOf(*entry)));
  return NamesInARow(names, kGreatestList);
}

void ShowWatermarks(std::ostream& out, const Group& group) {
  const std::vector<peers::WatermarkRecord>& watermarks = group[0]->watermarks;
  out << "\nWatermarks of " << NamesOf(group) << (watermarks.empty() ? ": none\n" : ":\n");
  if (watermarks.empty()) return;
  std::vector<Row> rows = {{"Name", "Text", "Font", "Size", "Color", "Style", "Opacity", "Rotate",
                            "Position", "Offset", "Repeat"}};
  for (const peers::WatermarkRecord& mark : watermarks)
    rows.push_back({OneLine(mark.name, kNameWidth), OneLine(mark.text, kTextWidth),
                    OneLine(mark.fontName, kNameWidth), Number(mark.fontSize), Color(mark.color),
                    Style(mark), std::to_string(mark.opacity), std::to_string(mark.rotate),
                    PositionText(mark.printPos), Number(mark.xOffset) + ", " + Number(mark.yOffset),
                    Repeat(mark)});
  PrintTable(out, rows);
}

}  // namespace

void ShowTables(std::ostream& out, const peers::SettingFileContent& content, bool isBrief) {
  ShowLists(out, content);
  Group entries;
  for (const peers::EntryRecord& entry : content.entries) entries.push_back(&entry);
  if (entries.empty()) {
    out << "Entries: none\n";
    return;
  }
  ShowEntries(out, entries);
  for (const std::string& line : IdleEntries(content.entries)) out << line << "\n";
  if (isBrief) return;
  for (const Group& group : Grouped(entries)) ShowWatermarks(out, group);
}

void ShowEntry(std::ostream& out, const peers::EntryRecord& entry, bool isBrief) {
  ShowEntries(out, {&entry});
  for (const std::string& line : IdleEntries({entry})) out << line << "\n";
  if (!isBrief) ShowWatermarks(out, {&entry});
}

}  // namespace app
