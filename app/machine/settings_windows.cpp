#include <algorithm>
#include <stdexcept>

#include "app/machine/home.h"
#include "app/machine/settings.h"
#include "component/names.h"
#include "component/reference.h"
#include "component/sigil_interfaces.h"
#include "peers/settings_component/guid.h"
#include "platform/utf.h"

namespace app {

using Sigil::Settings;

const bool kReadsValues = false;

namespace {

/// The component and its root object. Its exceptions pass through the operations of this object.
struct Component {
  Component() : part(LoadPart(kComponentFile)), fault(part.fault) {
    if (!fault.empty()) return;
    const auto create = Function<Sigil::CreateInstanceFunction>(part, kCreateInstanceName);
    if (create == nullptr)
      fault = "has no SigilCreateInstance";
    else if (CallForeign(create, &Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity,
                         reinterpret_cast<void**>(settings.Out())) != 0 ||
             !settings)
      fault = "gives no settings";
  }

  const Part part;
  std::string fault;  ///< Empty: there is a root object.
  Sigil::CReference<Sigil::Settings> settings;
};

/// An ID and a name.
using Item = peers::ExcludeRecord;

/// Returns the items of a list of the component, without those that `get` does not give.
template <class Get>
std::vector<Item> Items(std::int32_t count, Get get) {
  constexpr std::uint32_t kCapacity = 256;  // of a name, as in the library
  std::vector<Item> items;
  for (std::int32_t i = 0; i < count; ++i) {
    GUID id = {};
    wchar_t name[kCapacity] = {};
    std::uint32_t length = kCapacity;
    if (!get(i, &id, name, &length)) continue;
    name[kCapacity - 1] = L'\0';
    items.push_back({peers::GuidText(id), platform::ToUtf8(name)});
  }
  return items;
}

std::vector<std::string> Names(Settings& settings, std::int32_t (Settings::*count)(),
                               std::int32_t (Settings::*get)(std::int32_t, wchar_t*,
                                                             std::uint32_t*)) {
  std::vector<std::string> names;
  const auto name = [&](std::int32_t i, GUID*, wchar_t* text, std::uint32_t* length) {
    return !Sigil::Failed((settings.*get)(i, text, length));
  };
  for (Item& item : Items((settings.*count)(), name)) names.push_back(std::move(item.name));
  return names;
}

/// Null for an entry that the component does not give.
std::optional<peers::EntryRecord> ReadEntry(Settings& settings, const std::string& printer) {
  Sigil::CReference<Sigil::PrinterSettings> entry;
  if (settings.GetPrinterSettings(platform::FromUtf8(printer).c_str(), entry.Out()) != 0 || !entry)
    return std::nullopt;
  peers::EntryRecord record;
  record.printer = printer;
  const auto info = [&](std::int32_t i, GUID* id, wchar_t* name, const std::uint32_t* capacity) {
    return !Sigil::Failed(entry->GetWatermarkInfo(i, id, name, *capacity - 1));
  };
  for (Item& item : Items(entry->GetWatermarkCount(), info)) {
    peers::WatermarkRecord& mark = record.watermarks.emplace_back();
    mark.id = std::move(item.id);
    mark.name = std::move(item.name);
  }
  return record;
}

peers::SettingFileContent Read(Settings& settings) {
  peers::SettingFileContent content;
  std::vector<std::string> printers =
      Names(settings, &Settings::GetPrinterSettingCount, &Settings::GetPrinterSettingName);
  std::erase(printers, "*");
  printers.insert(printers.begin(), "*");
  for (const std::string& printer : printers)
    if (auto entry = ReadEntry(settings, printer)) content.entries.push_back(std::move(*entry));
  // An entry without watermarks is how the component gives the default one before the first update.
  if (!content.entries.empty() && content.entries[0].watermarks.empty() && printers.size() == 1)
    content.entries.clear();
  content.drivers =
      Names(settings, &Settings::GetDriverSettingCount, &Settings::GetDriverSettingName);
  content.excluded = Items(settings.GetExcludePrinterCount(),
                           [&](auto... to) { return settings.GetExcludePrinter(to...) == 0; });
  content.secondExcluded = Items(settings.GetSecondExcludeCount(),
                                 [&](auto... to) { return settings.GetSecondExclude(to...) == 0; });
  return content;
}

}  // namespace

peers::SettingFileContent ReadSettings() try {
  const Component component;
  if (!component.fault.empty())
    throw std::runtime_error("the Settings component " + component.fault);
  return Read(*component.settings);
} catch (const ForeignException&) {
  throw std::runtime_error("the Settings component failed while it was read");
}

std::optional<std::wstring> SettingFolder() try {
  const Component component;
  wchar_t folder[MAX_PATH] = {};
  std::uint32_t length = MAX_PATH;
  if (!component.fault.empty() ||
      Sigil::Failed(component.settings->GetSettingFileDir(folder, &length)))
    return std::nullopt;
  folder[MAX_PATH - 1] = L'\0';
  return folder;
} catch (...) {
  return std::nullopt;  // It is the component's exception, and the pass meets it too.
}

}  // namespace app
