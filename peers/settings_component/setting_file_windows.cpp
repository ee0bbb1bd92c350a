#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "peers/settings_component/setting_file.h"
#include "platform/owner.h"
#include "platform/windows/host_folder.h"

namespace peers {

namespace fs = std::filesystem;

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(WatermarkRecord, id, name, text, fontSize, fontName, color, bold,
                                   italic, underLine, fit, opacity, rotate, printPos,
                                   positionOption, xOffset, yOffset, repeatFirstAxis,
                                   repeatSecondAxis, repeatHSpace, repeatVSpace)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ActiveRecord, name, enabled, watermarks)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(EntryRecord, printer, lastSetting, customSettings, watermarks)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ExcludeRecord, id, name)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(SettingFileContent, entries, drivers, excluded, secondExcluded,
                                   contentLog)

namespace {

constexpr auto kClose = [](std::FILE* file) { std::fclose(file); };
using OpenFile = Owner<std::FILE*, kClose>;

}  // namespace

/// The records in memory. They are written at the end of its life, if they have changed.
class Database {
 public:
  explicit Database(const fs::path& file) : m_file(file), content(ReadSettingFile(file)) {
    for (const EntryRecord& entry : content.entries) places.emplace(entry.printer, places.size());
  }
  ~Database() {
    if (!isChanged) return;
    const std::string json = nlohmann::json(content).dump();
    const OpenFile file(_wfopen(m_file.c_str(), L"wb"));
    if (file) std::fwrite(json.data(), 1, json.size(), file.Get());
  }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

 private:
  const fs::path m_file;

 public:
  SettingFileContent content;
  std::map<std::string, std::size_t, std::less<>> places;  ///< Of the entries, by printer.
  bool isChanged = false;
};

namespace {

void Remove(std::vector<ExcludeRecord>& list, const std::string& id) {
  std::erase_if(list, [&](const ExcludeRecord& each) { return each.id == id; });
}

struct Applier {
  SettingFileContent& content;
  void operator()(const AddExclude& change) const { content.excluded.push_back(change.entry); }
  void operator()(const RemoveExclude& change) const { Remove(content.excluded, change.id); }
  void operator()(const RemoveSecondExclude& change) const {
    Remove(content.secondExcluded, change.id);
  }
  void operator()(const SetContentLog& change) const { content.contentLog = change.on; }
};

}  // namespace

SettingFile::SettingFile(const fs::path& file, Access /*access*/)
    : m_database(std::make_unique<Database>(file)) {}

SettingFile::~SettingFile() = default;

SettingFileContent SettingFile::ReadAll() {
  return m_database->content;
}

std::vector<std::string> SettingFile::PrinterNames() {
  std::vector<std::string> names;
  for (const EntryRecord& entry : m_database->content.entries)
    if (entry.printer != "*") names.push_back(entry.printer);
  return names;
}

std::vector<std::string> SettingFile::DriverNames() {
  return m_database->content.drivers;
}

std::vector<ExcludeRecord> SettingFile::Excluded() {
  return m_database->content.excluded;
}

std::vector<ExcludeRecord> SettingFile::SecondExcluded() {
  return m_database->content.secondExcluded;
}

EntryRecord SettingFile::ReadEntry(std::string_view printer) {
  const auto place = m_database->places.find(printer);
  if (place != m_database->places.end()) return m_database->content.entries[place->second];
  EntryRecord entry;
  entry.printer = printer;
  return entry;
}

void SettingFile::WriteEntry(const EntryRecord& entry) {
  std::vector<EntryRecord>& entries = m_database->content.entries;
  const auto [place, isNew] = m_database->places.emplace(entry.printer, entries.size());
  if (isNew) entries.emplace_back();
  entries[place->second] = entry;
  m_database->isChanged = true;
}

bool SettingFile::DeletePrinter(std::string_view name) {
  const auto place = m_database->places.find(name);
  if (name == "*" || place == m_database->places.end()) return false;
  std::vector<EntryRecord>& entries = m_database->content.entries;
  entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(place->second));
  m_database->places.clear();
  for (const EntryRecord& entry : entries)
    m_database->places.emplace(entry.printer, m_database->places.size());
  m_database->isChanged = true;
  return true;
}

bool SettingFile::DeleteDriver(std::string_view name) {
  return std::erase(m_database->content.drivers, name) > 0;
}

void SettingFile::Apply(const std::vector<ListChange>& changes) {
  for (const ListChange& change : changes) std::visit(Applier{m_database->content}, change);
  m_database->isChanged = true;
}

/// Beside the host's executable.
SettingPlace FindSettingPlace() {
  const std::wstring folder = platform::HostFolder() + L"settings";
  return {folder, fs::path(folder) / L"HarborLedge!.cfg"};
}

SettingFileContent ReadSettingFile(const fs::path& file) {
  const OpenFile opened(_wfopen(file.c_str(), L"rb"));
  if (!opened) return {};
  std::string json;
  char block[0x4000];
  while (const std::size_t size = std::fread(block, 1, sizeof block, opened.Get()))
    json.append(block, size);
  return nlohmann::json::parse(json).get<SettingFileContent>();
}

}  // namespace peers
