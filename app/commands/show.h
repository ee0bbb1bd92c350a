#pragma once

// What the setting file of the machine holds.

#include <iosfwd>
#include <string>
#include <vector>

#include "peers/settings_component/setting_file.h"

namespace app {

struct ShowOptions {
  bool json = false;
  bool brief = false;   ///< Without the watermarks.
  bool noIds = false;   ///< JSON without GUIDs: a setting lists its watermarks by name.
  std::string printer;  ///< One entry alone, by its printer ("*": the default entry); empty: all.
};

/// Reads the setting file and prints it. UsageError for a printer of which it knows nothing.
void Show(std::ostream& out, const ShowOptions& options);

/// Tables, without the watermarks when `isBrief`. Entries with the same watermarks have them in one
/// table.
void ShowTables(std::ostream& out, const peers::SettingFileContent& content, bool isBrief);

/// The same of one entry alone.
void ShowEntry(std::ostream& out, const peers::EntryRecord& entry, bool isBrief);

/// One JSON object: `contentLog`, `excluded` (names) and `entries`, each with `printer`,
/// `lastSetting`, `customSettings` and `watermarks`.
void ShowJson(std::ostream& out, const peers::SettingFileContent& content, bool hasIds);

}  // namespace app
