#include <algorithm>
#include <cstdio>
#include <iostream>
#include <map>
#include <optional>
#include <string_view>

#include "app/commands/command_line.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/text/errors.h"
#include "app/text/json.h"
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
  const std::string axes = mark.repeatFirstAxis && mark.repeatSecondAxis ? "both"
                           : mark.repeatFirstAxis                        ? "across"
                                                                         : "down";
  return axes + " " + std::to_string(mark.repeatHSpace) + ", " + std::to_string(mark.repeatVSpace);
}

std::string Active(const peers::ActiveRecord& setting, const peers::EntryRecord& entry) {
  return std::to_string(CountActive(setting, entry)) + " of " +
         std::to_string(entry.watermarks.size());
}

/// Returns the SHA-256 of the delivered text; empty when there is none to read.
std::string DeliveredChecksum() try {
  return ChecksumOf(ReadPolicySource("").text);
} catch (const UsageError&) {
  return "";
}

void ShowLists(const peers::SettingFileContent& content) {
  if (kReadsValues) std::cout << "Content log: " << OnOff(content.contentLog) << "\n";
  const auto list = [](const char* title, const std::vector<std::string>& names) {
    std::cout << title << (names.empty() ? ": none\n" : ":\n");
    for (const std::string& name : names) std::cout << "  " << OneLine(name) << "\n";
  };
  const auto namesOf = [](const std::vector<peers::ExcludeRecord>& records) {
    std::vector<std::string> names;
    for (const peers::ExcludeRecord& record : records) names.push_back(record.name);
    return names;
  };
  list("Exclude list", namesOf(content.excluded));
  if (!content.secondExcluded.empty()) list("Second exclude list", namesOf(content.secondExcluded));
  if (!content.drivers.empty()) list("Drivers with settings of their own", content.drivers);
  const std::string checksum = DeliveredChecksum();
  std::cout << "Delivered policy: " << (checksum.empty() ? "none" : "SHA-256 " + checksum) << "\n";
}

void ShowEntries(const std::vector<const peers::EntryRecord*>& entries) {
  std::vector<Row> rows = {kReadsValues ? Row{"Entry", "Switch", "Active watermarks"}
                                        : Row{"Entry", "Watermarks"}};
  for (const peers::EntryRecord* entry : entries)
    rows.push_back(kReadsValues ? Row{NameOf(*entry), OnOff(entry->lastSetting.enabled),
                                      Active(entry->lastSetting, *entry)}
                                : Row{NameOf(*entry), std::to_string(entry->watermarks.size())});
  std::cout << "Entries:\n";
  PrintTable(std::cout, rows);
  if (!kReadsValues) std::cout << kUnreadValues << "\n";
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

void ShowWatermarks(const Group& group) {
  const std::vector<peers::WatermarkRecord>& watermarks = group[0]->watermarks;
  std::cout << "\nWatermarks of " << NamesOf(group) << (watermarks.empty() ? ": none\n" : ":\n");
  if (watermarks.empty()) return;
  std::vector<Row> rows = {{"Name", "Text", "Font", "Size", "Color", "Style", "Opacity", "Rotate",
                            "Position", "Offset", "Repeat"}};
  if (!kReadsValues) rows[0].resize(1);
  for (const peers::WatermarkRecord& mark : watermarks) {
    if (!kReadsValues) {
      rows.push_back({OneLine(mark.name)});
      continue;
    }
    rows.push_back({OneLine(mark.name, kNameWidth), OneLine(mark.text, kTextWidth),
                    OneLine(mark.fontName, kNameWidth), Number(mark.fontSize), Color(mark.color),
                    Style(mark), std::to_string(mark.opacity), std::to_string(mark.rotate),
                    PositionText(mark.printPos), Number(mark.xOffset) + ", " + Number(mark.yOffset),
                    Repeat(mark)});
  }
  PrintTable(std::cout, rows);
}

void ShowTables(const peers::SettingFileContent& content, bool isBrief) {
  ShowLists(content);
  Group entries;
  for (const peers::EntryRecord& entry : content.entries) entries.push_back(&entry);
  if (entries.empty()) {
    std::cout << "Entries: none\n";
    return;
  }
  ShowEntries(entries);
  for (const std::string& line : IdleEntries(content.entries)) std::cout << line << "\n";
  if (isBrief) return;
  for (const Group& group : Grouped(entries)) ShowWatermarks(group);
}

void ShowEntry(const peers::EntryRecord& entry, bool isBrief) {
  ShowEntries({&entry});
  for (const std::string& line : IdleEntries({entry})) std::cout << line << "\n";
  if (!isBrief) ShowWatermarks({&entry});
}

// --- JSON

/// The name of each watermark of an entry, by its ID; null: a setting lists IDs.
using Names = std::optional<std::map<std::string_view, std::string_view>>;

/// Returns the watermarks that a setting lists: by ID, or by name, null where one is gone.
Json ListedMarks(const peers::ActiveRecord& setting, const Names& names) {
  if (!names) return setting.watermarks;
  Json listed = Json::array();
  for (const std::string& id : setting.watermarks) {
    const auto mark = names->find(id);
    listed.push_back(mark == names->end() ? Json() : Json(mark->second));
  }
  return listed;
}

Json ToJson(const peers::ActiveRecord& setting, const Names& names) {
  return {{"name", setting.name},
          {"enabled", setting.enabled},
          {"watermarks", ListedMarks(setting, names)}};
}

Json ToJson(const peers::WatermarkRecord& mark, bool hasId) {
  Json json = hasId ? Json{{"id", mark.id}} : Json::object();
  json.update(kReadsValues ? JsonOf(mark) : Json{{"name", mark.name}});
  return json;
}

Json ToJson(const peers::EntryRecord& entry, bool hasIds) {
  Names names;
  if (!hasIds) names.emplace();
  for (const peers::WatermarkRecord& mark : entry.watermarks)
    if (names) names->emplace(mark.id, mark.name);
  Json customSettings = Json::array();
  for (const peers::ActiveRecord& custom : entry.customSettings)
    customSettings.push_back(ToJson(custom, names));
  Json watermarks = Json::array();
  for (const peers::WatermarkRecord& mark : entry.watermarks)
    watermarks.push_back(ToJson(mark, hasIds));
  if (!kReadsValues) return {{"printer", entry.printer}, {"watermarks", watermarks}};
  return {{"printer", entry.printer},
          {"lastSetting", ToJson(entry.lastSetting, names)},
          {"customSettings", customSettings},
          {"watermarks", watermarks}};
}

/// One JSON object: `delivered` (the SHA-256 of its text, or null), `contentLog`, `excluded`
/// (names) and `entries`, each with `printer`, `lastSetting`, `customSettings` and `watermarks`;
/// only what can be read.
void ShowJson(const peers::SettingFileContent& content, bool hasIds) {
  Json excluded = Json::array();
  for (const peers::ExcludeRecord& printer : content.excluded) excluded.push_back(printer.name);
  Json entries = Json::array();
  for (const peers::EntryRecord& entry : content.entries) entries.push_back(ToJson(entry, hasIds));
  const std::string checksum = DeliveredChecksum();
  Json all = {{"delivered", checksum.empty() ? Json() : Json(checksum)}};
  if (kReadsValues) all["contentLog"] = content.contentLog;
  all["excluded"] = excluded;
  all["entries"] = entries;
  PrintJson(std::cout, all);
}

// --- One printer

struct Options {
  bool isJson = false;
  bool isBrief = false;  ///< Without the watermarks.
  bool noIds = false;    ///< JSON without GUIDs: a setting lists its watermarks by name.
  std::string printer;   ///< One entry alone, by its printer; empty: all.
};

void KeepOnly(peers::SettingFileContent& content, const std::string& printer) {
  std::erase_if(content.entries, [&](const auto& each) { return each.printer != printer; });
  std::erase_if(content.excluded, [&](const auto& each) { return each.name != printer; });
}

void ShowPrinter(const peers::SettingFileContent& content, const Options& options) {
  const auto entry =
      std::ranges::find(content.entries, options.printer, &peers::EntryRecord::printer);
  const bool isExcluded = IsExcluded(content, options.printer);
  const bool hasEntry = entry != content.entries.end();
  if (!hasEntry && !isExcluded) RequirePrinter(options.printer);
  if (isExcluded) std::cout << OneLine(options.printer) << " is on the exclude list.\n";
  if (hasEntry)
    ShowEntry(*entry, options.isBrief);
  else if (!isExcluded)
    std::cout << OneLine(options.printer)
              << " has no entry of its own: it goes by the default entry.\n";
}

/// Throws UsageError for a printer of which the setting file and the machine know nothing.
int Show(const Options& options) {
  peers::SettingFileContent content = ReadSettings();
  if (options.isJson) {
    if (!options.printer.empty()) KeepOnly(content, options.printer);
    ShowJson(content, !options.noIds);
  } else if (!options.printer.empty()) {
    ShowPrinter(content, options);
  } else {
    ShowTables(content, options.isBrief);
  }
  return 0;
}

}  // namespace

void AddShow(CommandLine& line) {
  auto [command, options] = line.Add("show", "Shows what the setting file holds", Show);
  AddJson(command, options.isJson);
  command.add_flag("--no-ids", options.noIds, "JSON without IDs, for comparing")->needs("--json");
  command.add_flag("--brief", options.isBrief, "Without the watermarks");
  command.add_option("--printer", options.printer, "One entry alone (*: the default entry)")
      ->type_name("NAME");
}

}  // namespace app
