#include <algorithm>

#include "app/commands/show.h"
#include "app/text/json.h"

namespace app {
namespace {

/// The watermarks that a setting lists: by their IDs, or by their names, null where one is gone.
Json Listed(const peers::ActiveRecord& setting, const peers::EntryRecord& entry, bool hasIds) {
  if (hasIds) return setting.watermarks;
  Json names = Json::array();
  for (const std::string& id : setting.watermarks) {
    const auto mark = std::ranges::find(entry.watermarks, id, &peers::WatermarkRecord::id);
    names.push_back(mark == entry.watermarks.end() ? Json() : Json(mark->name));
  }
  return names;
}

Json ToJson(const peers::ActiveRecord& setting, const peers::EntryRecord& entry, bool hasIds) {
  return {{"name", setting.name},
          {"enabled", setting.enabled},
          {"watermarks", Listed(setting, entry, hasIds)}};
}

Json ToJson(const peers::WatermarkRecord& mark) {
  return {{"id", mark.id},
          {"name", mark.name},
          {"text", mark.text},
          {"fontSize", mark.fontSize},
          {"fontName", mark.fontName},
          {"color", mark.color},
          {"bold", mark.bold},
          {"italic", mark.italic},
          {"underLine", mark.underLine},
          {"fit", mark.fit},
          {"opacity", mark.opacity},
          {"rotate", mark.rotate},
          {"printPos", mark.printPos},
          {"positionOption", mark.positionOption},
          {"xOffset", mark.xOffset},
          {"yOffset", mark.yOffset},
          {"repeatFirstAxis", mark.repeatFirstAxis},
          {"repeatSecondAxis", mark.repeatSecondAxis},
          {"repeatHSpace", mark.repeatHSpace},
          {"repeatVSpace", mark.repeatVSpace}};
}

Json ToJson(const peers::EntryRecord& entry, bool hasIds) {
  Json customSettings = Json::array();
  for (const peers::ActiveRecord& custom : entry.customSettings)
    customSettings.push_back(ToJson(custom, entry, hasIds));
  Json watermarks = Json::array();
  for (const peers::WatermarkRecord& mark : entry.watermarks) {
    watermarks.push_back(ToJson(mark));
    if (!hasIds) watermarks.back().erase("id");
  }
  return {{"printer", entry.printer},
          {"lastSetting", ToJson(entry.lastSetting, entry, hasIds)},
          {"customSettings", customSettings},
          {"watermarks", watermarks}};
}

}  // namespace

void ShowJson(std::ostream& out, const peers::SettingFileContent& content, bool hasIds) {
  Json excluded = Json::array();
  for (const peers::ExcludeRecord& printer : content.excluded) excluded.push_back(printer.name);
  Json entries = Json::array();
  for (const peers::EntryRecord& entry : content.entries) entries.push_back(ToJson(entry, hasIds));
  PrintJson(out,
            {{"contentLog", content.contentLog}, {"excluded", excluded}, {"entries", entries}});
}

}  // namespace app
