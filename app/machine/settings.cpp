#include "app/machine/settings.h"

#include <algorithm>
#include <charconv>

#include "app/machine/state.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {

const peers::EntryRecord* FindEntry(const peers::SettingFileContent& content,
                                    std::string_view printer) {
  const auto found = std::ranges::find(content.entries, printer, &peers::EntryRecord::printer);
  return found == content.entries.end() ? nullptr : &*found;
}

bool IsExcluded(const peers::SettingFileContent& content, const std::string& printer) {
  const auto isOn = [&](const std::vector<peers::ExcludeRecord>& list) {
    return std::ranges::find(list, printer, &peers::ExcludeRecord::name) != list.end();
  };
  return isOn(content.excluded) || isOn(content.secondExcluded);
}

void RequirePrinter(const std::string& name) {
  std::set<std::string> names;
  for (const PrinterState& printer : ListPrinters()) names.insert(platform::ToUtf8(printer.name));
  if (names.contains(name)) return;
  const std::string guess = Guess(name, names);
  throw UsageError("--printer: there is no printer '" + name + "'" +
                   (guess.empty() ? "" : "; is '" + guess + "' meant?"));
}

std::string EntryName(const std::string& printer) {
  return printer == "*" ? "* (default entry)" : printer;
}

std::ptrdiff_t CountActive(const peers::ActiveRecord& setting, const peers::EntryRecord& entry) {
  const std::set<std::string_view> listed(setting.watermarks.begin(), setting.watermarks.end());
  return std::ranges::count_if(entry.watermarks, [&](const peers::WatermarkRecord& mark) {
    return listed.contains(mark.id);
  });
}

std::vector<std::string> IdleEntries(const std::vector<peers::EntryRecord>& entries) {
  constexpr std::size_t kMost = 5;
  std::vector<std::string> lines;
  for (const peers::EntryRecord& entry : entries)
    if (entry.lastSetting.enabled && CountActive(entry.lastSetting, entry) == 0)
      lines.push_back(OneLine(EntryName(entry.printer)) +
                      " is on, but lists no watermark: run update");
  if (lines.size() <= kMost) return lines;
  const std::size_t left = lines.size() - kMost;
  lines.resize(kMost);
  lines.push_back(AndMore(left, "entry", "entries"));
  return lines;
}

Json JsonOf(const peers::WatermarkRecord& mark) {
  return {{"name", mark.name},
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

std::string Shown(const std::string& field, const Json& value) {
  char text[32] = {};
  if (value.is_boolean()) return value.get<bool>() ? "on" : "off";
  if (value.is_string()) return Quoted(value.get<std::string>());
  if (value.is_number_float())
    return {text, std::to_chars(text, text + sizeof text, value.get<double>()).ptr};
  if (field != "color") return value.dump();
  std::snprintf(text, sizeof text, "0x%06X", static_cast<unsigned>(value.get<std::int32_t>()));
  return text;
}

std::vector<std::string> WhatIsIdle() try {
  return kReadsValues ? IdleEntries(ReadSettings().entries) : std::vector<std::string>();
} catch (const std::exception&) {
  return {};
}

std::optional<std::set<std::string>> WatermarkIds() try {
  if (!kReadsValues) return std::nullopt;
  std::set<std::string> ids;
  for (const auto& entry : ReadSettings().entries)
    for (const auto& mark : entry.watermarks) ids.insert(mark.id);
  return ids;
} catch (const std::exception&) {
  return std::set<std::string>();
}

}  // namespace app
