#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <system_error>

#include "app/commands/show.h"
#include "app/machine/settings.h"
#include "app/text/table.h"
#include "app/text/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

namespace app {
namespace {

bool IsExcluded(const peers::SettingFileContent& content, const std::string& printer) {
  const auto isOn = [&](const std::vector<peers::ExcludeRecord>& list) {
    return std::ranges::find(list, printer, &peers::ExcludeRecord::name) != list.end();
  };
  return isOn(content.excluded) || isOn(content.secondExcluded);
}

bool IsPrinter(const std::string& name) {
  const auto printers = platform::LoadMachine().printers;
  return std::ranges::any_of(printers,
                             [&](const auto& each) { return platform::ToUtf8(each.name) == name; });
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
  const bool hasEntry = entry != content.entries.end();
  if (!hasEntry && !isExcluded && !IsPrinter(options.printer))
    throw UsageError("--printer: there is no printer '" + options.printer + "'");
  if (isExcluded) out << OneLine(options.printer) << " is on the exclude list.\n";
  if (hasEntry)
    ShowEntry(out, *entry, options.brief);
  else if (!isExcluded)
    out << OneLine(options.printer) << " has no entry of its own: it goes by the default entry.\n";
}

}  // namespace

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
