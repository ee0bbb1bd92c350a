#include <nlohmann/json.hpp>
#include <ostream>

#include "app/show.h"

namespace app {
namespace {

// Members stay in the order in which they are written here.
using Json = nlohmann::ordered_json;

Json ToJson(const peers::ActiveRecord& setting) {
  return {{"name", setting.name}, {"enabled", setting.enabled}, {"watermarks", setting.watermarks}};
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

Json ToJson(const peers::EntryRecord& entry);

template <class Record>
Json ToJson(const std::vector<Record>& records) {
  Json list = Json::array();
  for (const Record& record : records) list.push_back(ToJson(record));
  return list;
}

Json ToJson(const peers::EntryRecord& entry) {
  return {{"printer", entry.printer},
          {"lastSetting", ToJson(entry.lastSetting)},
          {"customSettings", ToJson(entry.customSettings)},
          {"watermarks", ToJson(entry.watermarks)}};
}

}  // namespace

void ShowJson(std::ostream& out, const peers::SettingFileContent& content) {
  Json excluded = Json::array();
  for (const peers::ExcludeRecord& printer : content.excluded) excluded.push_back(printer.name);
  const Json all = {{"contentLog", content.contentLog},
                    {"excluded", excluded},
                    {"entries", ToJson(content.entries)}};
  // A file that others have changed may hold ill-formed text.
  out << all.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

}  // namespace app
