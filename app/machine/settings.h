#pragma once

// The records of the machine's setting file, and facts about its entries.

#include <cstddef>
#include <optional>
#include <set>

#include "app/text/json.h"
#include "peers/settings_component/setting_file.h"

namespace app {

/// Returns the setting file's records. Throws std::runtime_error, with the file's name, when it
/// cannot be read. On Windows they are what the component gives: of the entries their watermarks'
/// IDs and names, and the lists.
peers::SettingFileContent ReadSettings();

/// Returns the component's folder for settings, null when the component gives none.
std::optional<std::wstring> SettingFolder();

/// False where the component gives no values back: texts, switches and the rest of the records.
extern const bool kReadsValues;
inline constexpr char kUnreadValues[] = "The component gives no values back, so none is told.";

/// Returns the printer's entry, the default one for "*"; null when there is none.
const peers::EntryRecord* FindEntry(const peers::SettingFileContent& content,
                                    std::string_view printer);

/// True if the printer is on one of the two exclude lists.
bool IsExcluded(const peers::SettingFileContent& content, const std::string& printer);

/// Throws UsageError, with the name that is meant, unless the machine has a printer of this name.
void RequirePrinter(const std::string& name);

/// "* (default entry)", or the printer's name.
std::string EntryName(const std::string& printer);

/// Returns how many of the entry's watermarks the setting lists. A setting may still list
/// watermarks that have been deleted since.
std::ptrdiff_t CountActive(const peers::ActiveRecord& setting, const peers::EntryRecord& entry);

/// Returns a line for each entry that is on although its last setting lists none of its watermarks,
/// and no more than some lines.
std::vector<std::string> IdleEntries(const std::vector<peers::EntryRecord>& entries);

/// The same of the setting file; none when it cannot be read, or gives no values back.
std::vector<std::string> WhatIsIdle();

/// Returns the GUIDs of all watermarks in the setting file, none when it cannot be read; null where
/// the file's form is the component's own.
std::optional<std::set<std::string>> WatermarkIds();

/// Returns the place of the page that a record's position stands for, "bottom right"; the number
/// itself beside 0 to 8.
inline std::string PositionText(std::int32_t position) {
  constexpr const char* kPlaces[] = {"top left",    "top center",    "top right",
                                     "middle left", "center",        "middle right",
                                     "bottom left", "bottom center", "bottom right"};
  return position >= 0 && position < 9 ? kPlaces[position] : std::to_string(position);
}

/// Returns the fields of a record, except its random ID, by the names and in the order of the
/// setting file.
Json JsonOf(const peers::WatermarkRecord& mark);
/// Returns the value of such a field for people: 'text', 14, on, 0xFF0000.
std::string Shown(const std::string& field, const Json& value);

}  // namespace app
