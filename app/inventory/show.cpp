#include "app/inventory/show.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include "app/inventory/table.h"
#include "app/usage_error.h"

namespace app {
namespace {

bool IsExcluded(const peers::SettingFileContent& content, const std::string& printer) {
  const auto isOn = [&](const std::vector<peers::ExcludeRecord>& list) {
    return std::ranges::find(list, printer, &peers::ExcludeRecord::name) != list.end();
  };
  return isOn(content.excluded) || isOn(content.secondExcluded);
}

void KeepOnly(peers::SettingFileContent& content, const std::string& printer) {
  std::erase_if(content.entries, [&](const auto& each) { return each.printer != printer; });
  std::erase_if(content.excluded, [&](const auto& each) { return each.name != printer; });
}

void ShowPrinter(std::ostream& out, const peers::SettingFileContent& content,
                 const ShowOptions& options) {
  const auto entry =
      std::ranges::find(content.entries, options.printer, &peers::EntryRecord::printer);
  const bool isExcluded = IsExcluded(content, options.printer);
  if (entry == content.entries.end() && !isExcluded)
    throw UsageError("show: no entry for '" + options.printer + "', and it is on no exclude list");
  if (isExcluded) out << OneLine(options.printer) << " is on the exclude list.\n";
  if (entry != content.entries.end()) ShowEntry(out, *entry, options.brief);
}

}  // namespace

peers::SettingFileContent ReadSettings() {
  const auto file = peers::FindSettingPlace().file;
  try {
    return peers::ReadSettingFile(file);
  } catch (const std::system_error&) {
    throw;  // It names the file.
  } catch (const std::exception& error) {
    throw std::runtime_error(file.string() + ": " + error.what());
  }
}

void Show(std::ostream& out, const ShowOptions& options) {
  peers::SettingFileContent content = ReadSettings();
  if (options.json) {
    if (!options.printer.empty()) KeepOnly(content, options.printer);
    ShowJson(out, content, !options.noIds);
  } else if (!options.printer.empty()) {
    ShowPrinter(out, content, options);
  } else {
    ShowTables(out, content, options.brief);
  }
}

}  // namespace app
