#include <algorithm>
#include <cstdio>
#include <ostream>

#include "app/show.h"
#include "app/table.h"

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

std::string NameOf(const peers::EntryRecord& entry) {
  return entry.printer == "*" ? "* (default entry)" : OneLine(entry.printer);
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

/// A setting may still list watermarks that have been deleted since.
std::string Active(const peers::ActiveRecord& setting, const peers::EntryRecord& entry) {
  const auto count = std::count_if(entry.watermarks.begin(), entry.watermarks.end(),
                                   [&](const peers::WatermarkRecord& mark) {
                                     const auto& ids = setting.watermarks;
                                     return std::find(ids.begin(), ids.end(), mark.id) != ids.end();
                                   });
  return std::to_string(count) + " of " + std::to_string(entry.watermarks.size());
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

void ShowEntries(std::ostream& out, const std::vector<peers::EntryRecord>& entries) {
  if (entries.empty()) {
    out << "Entries: none\n";
    return;
  }
  std::vector<Row> rows = {{"Entry", "Setting", "Switch", "Active watermarks"}};
  for (const peers::EntryRecord& entry : entries) {
    const peers::ActiveRecord& last = entry.lastSetting;
    rows.push_back({NameOf(entry), "last", OnOff(last.enabled), Active(last, entry)});
    for (const peers::ActiveRecord& custom : entry.customSettings)
      rows.push_back({"", "custom " + OneLine(custom.name, kNameWidth), OnOff(custom.enabled),
                      Active(custom, entry)});
  }
  out << "Entries:\n";
  PrintTable(out, rows);
}

void ShowWatermarks(std::ostream& out, const peers::EntryRecord& entry) {
  out << "\nWatermarks of " << NameOf(entry) << (entry.watermarks.empty() ? ": none\n" : ":\n");
  if (entry.watermarks.empty()) return;
  std::vector<Row> rows = {{"Name", "Text", "Font", "Size", "Color", "Style", "Opacity", "Rotate",
                            "Position", "Offset", "Repeat"}};
  for (const peers::WatermarkRecord& mark : entry.watermarks)
    rows.push_back({OneLine(mark.name, kNameWidth), OneLine(mark.text, kTextWidth),
                    OneLine(mark.fontName, kNameWidth), Number(mark.fontSize), Color(mark.color),
                    Style(mark), std::to_string(mark.opacity), std::to_string(mark.rotate),
                    std::to_string(mark.printPos),
                    Number(mark.xOffset) + ", " + Number(mark.yOffset), Repeat(mark)});
  PrintTable(out, rows);
}

}  // namespace

void ShowTables(std::ostream& out, const peers::SettingFileContent& content, Detail detail) {
  ShowLists(out, content);
  ShowEntries(out, content.entries);
  if (detail == Detail::kBrief) return;
  for (const peers::EntryRecord& entry : content.entries) ShowWatermarks(out, entry);
}

}  // namespace app
