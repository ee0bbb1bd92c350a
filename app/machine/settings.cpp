#include "app/machine/settings.h"

#include <algorithm>
#include <set>

#include "app/machine/state.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {

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

std::string NameOf(const peers::EntryRecord& entry) {
  return EntryName(entry.printer);
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
      lines.push_back(OneLine(NameOf(entry)) + " is on, but lists no watermark: run update");
  if (lines.size() <= kMost) return lines;
  const std::size_t left = lines.size() - kMost;
  lines.resize(kMost);
  lines.push_back("and " + std::to_string(left) + " entries more");
  return lines;
}

}  // namespace app
