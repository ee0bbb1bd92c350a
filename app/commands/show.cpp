#include <iostream>
#include <map>

#include "app/commands/command_line.h"
#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// Returns the SHA-256 of the delivered text; null when there is none to read.
std::optional<std::string> DeliveredChecksum() try {
  return ChecksumOf(ReadPolicySource("").text);
} catch (const UsageError&) {
  return std::nullopt;
}

// --- Tables

using Mark = peers::WatermarkRecord;

std::string Style(const Mark& mark) {
  std::string style;
  for (const auto& [isSet, word] :
       std::initializer_list<std::pair<bool, const char*>>{{mark.bold, " bold"},
                                                           {mark.italic, " italic"},
                                                           {mark.underLine, " underlined"},
                                                           {mark.fit, " fitted"}})
    if (isSet) style += word;
  return Trimmed(style);
}

std::string Repeat(const Mark& mark) {
  if (!mark.repeatFirstAxis && !mark.repeatSecondAxis) return "";
  const std::string axes = mark.repeatFirstAxis && mark.repeatSecondAxis ? "both"
                           : mark.repeatFirstAxis                        ? "across"
                                                                         : "down";
  return axes + " " + std::to_string(mark.repeatHSpace) + ", " + std::to_string(mark.repeatVSpace);
}

struct Column {
  const char* heading;
  std::string (*cell)(const Mark&);
};

constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kTextWidth = 36;

/// Of a watermark. The first one is all that can be read where no values can.
constexpr Column kColumns[] = {
    {"Name",
     [](const Mark& mark) { return kReadsValues ? OneLine(mark.name, kNameWidth) : mark.name; }},
    {"Text", [](const Mark& mark) { return OneLine(mark.text, kTextWidth); }},
    {"Font", [](const Mark& mark) { return OneLine(mark.fontName, kNameWidth); }},
    {"Size", [](const Mark& mark) { return Shown("fontSize", mark.fontSize); }},
    {"Color", [](const Mark& mark) { return Shown("color", mark.color).substr(2); }},
    {"Style", Style},
    {"Opacity", [](const Mark& mark) { return std::to_string(mark.opacity); }},
    {"Rotate", [](const Mark& mark) { return std::to_string(mark.rotate); }},
    {"Position", [](const Mark& mark) { return PositionText(mark.printPos); }},
    {"Offset",
     [](const Mark& mark) {
       return Shown("xOffset", mark.xOffset) + ", " + Shown("yOffset", mark.yOffset);
     }},
    {"Repeat", Repeat}};

void ShowList(const char* title, const std::vector<std::string>& names) {
  std::cout << title << (names.empty() ? ": none\n" : ":\n");
  for (const std::string& name : names) std::cout << "  " << OneLine(name) << "\n";
}

std::vector<std::string> NamesOf(const std::vector<peers::ExcludeRecord>& records) {
  std::vector<std::string> names;
  for (const peers::ExcludeRecord& record : records) names.push_back(record.name);
  return names;
}

void ShowLists(const peers::SettingFileContent& content) {
  if (kReadsValues) std::cout << "Content log: " << Shown("contentLog", content.contentLog) << "\n";
  ShowList("Exclude list", NamesOf(content.excluded));
  if (!content.secondExcluded.empty())
    ShowList("Second exclude list", NamesOf(content.secondExcluded));
  if (!content.drivers.empty()) ShowList("Drivers with settings of their own", content.drivers);
  std::cout << "Delivered policy: ";
  if (const auto checksum = DeliveredChecksum())
    std::cout << "SHA-256 " << *checksum << "\n";
  else if (std::error_code error; fs::exists(HostPath(FindDeliveryFolder().PolicyFile()), error))
    std::cout << "cannot be read; `sigilctl verify` says why\n";
  else
    std::cout << "none\n";
}

/// The watermarks without their IDs, and the names of the entries that hold them.
using Group = std::pair<std::vector<Mark>, std::vector<std::string>>;

/// Groups entries with equal watermarks, IDs ignored, in the order of their first ones.
std::vector<Group> Grouped(const std::vector<peers::EntryRecord>& entries) {
  std::vector<Group> groups;
  std::map<std::vector<Mark>, std::size_t> places;
  for (const peers::EntryRecord& entry : entries) {
    std::vector<Mark> marks = entry.watermarks;
    for (Mark& mark : marks) mark.id.clear();
    const auto [place, isNew] = places.emplace(marks, groups.size());
    if (isNew) groups.emplace_back(std::move(marks), std::vector<std::string>());
    groups[place->second].second.push_back(OneLine(EntryName(entry.printer)));
  }
  return groups;
}

void ShowWatermarks(const Group& group) {
  constexpr std::size_t kMostNames = 8;
  const auto& [marks, entries] = group;
  std::cout << "\nWatermarks of " << NamesInARow(entries, kMostNames)
            << (marks.empty() ? ": none\n" : ":\n");
  if (marks.empty()) return;
  const std::span columns(kColumns, kReadsValues ? std::size(kColumns) : 1);
  std::vector<Row> rows(1);
  for (const Column& column : columns) rows[0].push_back(column.heading);
  for (const Mark& mark : marks) {
    Row& row = rows.emplace_back();
    for (const Column& column : columns) row.push_back(column.cell(mark));
  }
  PrintTable(std::cout, rows);
}

void ShowEntries(const std::vector<peers::EntryRecord>& entries, bool isBrief) {
  std::vector<Row> rows = {kReadsValues ? Row{"Entry", "Switch", "Active watermarks"}
                                        : Row{"Entry", "Watermarks"}};
  for (const peers::EntryRecord& entry : entries) {
    const std::string count = std::to_string(entry.watermarks.size());
    const std::string active = std::to_string(CountActive(entry.lastSetting, entry));
    rows.push_back(kReadsValues
                       ? Row{EntryName(entry.printer), Shown("enabled", entry.lastSetting.enabled),
                             active + " of " + count}
                       : Row{EntryName(entry.printer), count});
  }
  std::cout << "Entries:\n";
  PrintTable(std::cout, rows);
  if (!kReadsValues) std::cout << kUnreadValues << "\n";
  for (const std::string& line : IdleEntries(entries)) std::cout << line << "\n";
  if (isBrief) return;
  for (const Group& group : Grouped(entries)) ShowWatermarks(group);
}

// --- JSON

/// A setting lists its watermarks by ID, or else by name, null where one is gone.
Json ToJson(const peers::EntryRecord& entry, bool hasIds) {
  std::map<std::string_view, Json> names;
  Json watermarks = Json::array();
  for (const Mark& mark : entry.watermarks) {
    names.emplace(mark.id, mark.name);
    Json& json = watermarks.emplace_back(hasIds ? Json{{"id", mark.id}} : Json::object());
    json.update(kReadsValues ? JsonOf(mark) : Json{{"name", mark.name}});
  }
  if (!kReadsValues) return {{"printer", entry.printer}, {"watermarks", watermarks}};
  const auto toJson = [&](const peers::ActiveRecord& setting) {
    Json listed = Json::array();
    for (const std::string& id : setting.watermarks)
      listed.push_back(hasIds ? Json(id) : names[id]);
    return Json{{"name", setting.name}, {"enabled", setting.enabled}, {"watermarks", listed}};
  };
  Json customSettings = Json::array();
  for (const peers::ActiveRecord& custom : entry.customSettings)
    customSettings.push_back(toJson(custom));
  return {{"printer", entry.printer},
          {"lastSetting", toJson(entry.lastSetting)},
          {"customSettings", customSettings},
          {"watermarks", watermarks}};
}

/// One JSON object: `delivered` (the SHA-256 of its text, or null), `contentLog`, `excluded`
/// (names) and `entries`, each with `printer`, `lastSetting`, `customSettings` and `watermarks`;
/// only what can be read.
void ShowJson(const peers::SettingFileContent& content, bool hasIds) {
  Json entries = Json::array();
  for (const peers::EntryRecord& entry : content.entries) entries.push_back(ToJson(entry, hasIds));
  const auto checksum = DeliveredChecksum();
  Json all = {{"delivered", checksum ? Json(*checksum) : Json()}};
  if (kReadsValues) all["contentLog"] = content.contentLog;
  all["excluded"] = NamesOf(content.excluded);
  all["entries"] = entries;
  PrintJson(std::cout, all);
}

struct Options {
  bool isJson = false;
  bool isBrief = false;  ///< Without the watermarks.
  bool noIds = false;    ///< JSON without GUIDs: a setting lists its watermarks by name.
  std::string printer;   ///< One entry alone, by its printer; empty: all.
};

void ShowPrinter(const peers::SettingFileContent& content, const Options& options) {
  const std::string name = OneLine(options.printer);
  const bool isExcluded = IsExcluded(content, options.printer);
  if (isExcluded) std::cout << name << " is on the exclude list.\n";
  if (!content.entries.empty())
    ShowEntries(content.entries, options.isBrief);
  else if (!isExcluded)
    std::cout << name << " has no entry of its own: it goes by the default entry.\n";
}

/// Throws UsageError for a printer of which the setting file and the machine know nothing.
int Show(const Options& options) {
  peers::SettingFileContent content = ReadSettings();
  if (!options.printer.empty()) {
    std::erase_if(content.entries, [&](auto& each) { return each.printer != options.printer; });
    std::erase_if(content.excluded, [&](auto& each) { return each.name != options.printer; });
    if (content.entries.empty() && !IsExcluded(content, options.printer))
      RequirePrinter(options.printer);
  }
  if (options.isJson) {
    ShowJson(content, !options.noIds);
  } else if (!options.printer.empty()) {
    ShowPrinter(content, options);
  } else {
    ShowLists(content);
    if (content.entries.empty())
      std::cout << "Entries: none\n";
    else
      ShowEntries(content.entries, options.isBrief);
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
