#pragma once

// What the setting file of the machine holds.

#include <iosfwd>

#include "peers/settings_component/setting_file.h"

namespace app {

enum class Detail { kBrief, kWhole };

/// Tables; the brief form leaves the watermarks out.
void ShowTables(std::ostream& out, const peers::SettingFileContent& content, Detail detail);

/// One JSON object: `contentLog`, `excluded` (names) and `entries`, each with `printer`,
/// `lastSetting`, `customSettings` and `watermarks`.
void ShowJson(std::ostream& out, const peers::SettingFileContent& content);

}  // namespace app
