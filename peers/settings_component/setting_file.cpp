#include "peers/settings_component/setting_file.h"

#include <sys/stat.h>

#include <mutex>
#include <system_error>
#include <tuple>
#include <utility>

#include "peers/descriptor.h"
#include "peers/settings_component/database.h"
#include "platform/posix/machine/machine.h"
#include "platform/shell.h"

namespace peers {
namespace {

namespace fs = std::filesystem;

constexpr char kDefaultEntry[] = "*";
constexpr std::int64_t kApplicationId = 0x5349474C;
constexpr std::int64_t kVersion = 1;

constexpr char kSchema[] = R"(
  CREATE TABLE entry(id INTEGER PRIMARY KEY AUTOINCREMENT, printer TEXT NOT NULL UNIQUE);
  CREATE TABLE watermark(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, position INTEGER NOT NULL,
    id TEXT NOT NULL, name TEXT NOT NULL, text TEXT NOT NULL, fontSize REAL NOT NULL,
    fontName TEXT NOT NULL, color INTEGER NOT NULL, bold INTEGER NOT NULL, italic INTEGER NOT NULL,
    underLine INTEGER NOT NULL, fit INTEGER NOT NULL, opacity INTEGER NOT NULL,
    rotate INTEGER NOT NULL, printPos INTEGER NOT NULL, positionOption INTEGER NOT NULL,
    xOffset REAL NOT NULL, yOffset REAL NOT NULL, repeatFirstAxis INTEGER NOT NULL,
    repeatSecondAxis INTEGER NOT NULL, repeatHSpace INTEGER NOT NULL,
    repeatVSpace INTEGER NOT NULL, PRIMARY KEY(entry, position)) WITHOUT ROWID;
  CREATE TABLE setting(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, position INTEGER NOT NULL,
    name TEXT NOT NULL, enabled INTEGER NOT NULL, PRIMARY KEY(entry, position)) WITHOUT ROWID;
  CREATE TABLE active(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, setting INTEGER NOT NULL,
    position INTEGER NOT NULL, watermark TEXT NOT NULL,
    PRIMARY KEY(entry, setting, position)) WITHOUT ROWID;
  CREATE TABLE driver(id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE);
  CREATE TABLE excluded(id TEXT NOT NULL UNIQUE, name TEXT NOT NULL);
  CREATE TABLE second_exclude(id TEXT NOT NULL UNIQUE, name TEXT NOT NULL);
  CREATE TABLE switch(content_log INTEGER NOT NULL);
  INSERT INTO switch VALUES(0);
  PRAGMA application_id = 0x5349474C;
  PRAGMA user_version = 1;
)";

/// Built beside its place and linked to it when complete; where two do so at once, one file stays.
void Create(const fs::path& file) {
  std::string draft = file.string() + ".XXXXXX";
  if (!Descriptor(mkstemp(draft.data()))) ThrowSystemError(draft);
  try {
    Database database(draft, SQLITE_OPEN_READWRITE);
    database.Execute("PRAGMA journal_mode = WAL");
    Transaction transaction(database);
    database.Execute(kSchema);
    transaction.Commit();
  } catch (...) {
    unlink(draft.c_str());
    throw;
  }
  const int linked = link(draft.c_str(), file.c_str());
  const int error = errno;
  unlink(draft.c_str());
  if (linked != 0 && error != EEXIST) ThrowSystemError(file.string(), error);
}

/// The files that SQLite makes beside the setting file get its mode. Those made while it was
/// read-only would keep everybody from writing after it is writable again, so their mode follows.
void LetModesFollow(const fs::path& file) {
  struct stat own = {};
  if (lstat(file.c_str(), &own) != 0) return;
  for (const char* suffix : {"-wal", "-shm"}) {
    const std::string name = file.string() + suffix;
    struct stat beside = {};
    if (lstat(name.c_str(), &beside) == 0 && S_ISREG(beside.st_mode) &&
        beside.st_mode != own.st_mode)
      chmod(name.c_str(), own.st_mode & 07777);
  }
}

/// Always to write, where the file allows that: only a writer takes the files beside it away again.
std::unique_ptr<Database> Open(const fs::path& file, SettingFile::Access access) {
  if (access == SettingFile::Access::kCreate && !fs::exists(file)) Create(file);
  LetModesFollow(file);
  auto database = std::make_unique<Database>(file, SQLITE_OPEN_READWRITE);
  if (database->Number("PRAGMA application_id") != kApplicationId ||
      database->Number("PRAGMA user_version") != kVersion)
    throw DatabaseError(file.string() + ": not a setting file");
  database->Execute("PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON");
  if (access == SettingFile::Access::kRead) database->Execute("PRAGMA query_only = ON");
  return database;
}

std::vector<std::string> Names(Database& database, const char* sql) {
  std::vector<std::string> names;
  database.Query(sql, [&](const Database::Row& row) { names.push_back(row.Text(0)); });
  return names;
}

std::vector<ExcludeRecord> Excludes(Database& database, const char* sql) {
  std::vector<ExcludeRecord> entries;
  database.Query(sql, [&](const Database::Row& row) {
    entries.push_back({row.Text(0), row.Text(1)});
  });
  return entries;
}

WatermarkRecord ReadWatermark(const Database::Row& row) {
  return {row.Text(0),  row.Text(1),  row.Text(2),  row.Real(3), row.Text(4),
          row.Int(5),   row.Flag(6),  row.Flag(7),  row.Flag(8), row.Flag(9),
          row.Int(10),  row.Int(11),  row.Int(12),  row.Int(13), row.Real(14),
          row.Real(15), row.Flag(16), row.Flag(17), row.Int(18), row.Int(19)};
}

void WriteWatermark(Database& database, std::int64_t entry, std::size_t position,
                    const WatermarkRecord& mark) {
  database.Run("INSERT INTO watermark VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)", entry,
               position, mark.id, mark.name, mark.text, mark.fontSize, mark.fontName, mark.color,
               mark.bold, mark.italic, mark.underLine, mark.fit, mark.opacity, mark.rotate,
               mark.printPos, mark.positionOption, mark.xOffset, mark.yOffset, mark.repeatFirstAxis,
               mark.repeatSecondAxis, mark.repeatHSpace, mark.repeatVSpace);
}

void WriteActive(Database& database, std::int64_t entry, std::size_t setting,
                 const ActiveRecord& record) {
  database.Run("INSERT INTO setting VALUES(?,?,?,?)", entry, setting, record.name, record.enabled);
  for (std::size_t i = 0; i < record.watermarks.size(); ++i)
    database.Run("INSERT INTO active VALUES(?,?,?,?)", entry, setting, i, record.watermarks[i]);
}

/// What tells one machine, and one state of it, from another. Asking a machine with many printers
/// for its user takes long, and each handle on the component asks.
using MachineState = std::tuple<fs::path, fs::file_time_type, std::uintmax_t>;

MachineState CurrentMachine() {
  std::error_code missing;
  const fs::path file = platform::MachineRoot() / "machine.ini";
  return {file, fs::last_write_time(file, missing), fs::file_size(file, missing)};
}

SettingPlace AskForPlace() {
  wchar_t* known = nullptr;
  const HRESULT result = SHGetKnownFolderPath(FOLDERID_LocalAppDataLow, 0, nullptr, &known);
  std::wstring folder = SUCCEEDED(result) ? known : L"";
  CoTaskMemFree(known);
  if (folder.empty()) throw std::runtime_error("the user's application data folder is unknown");
  folder += L"\\KBR-LTD\\HarborLedge!";
  return {folder, platform::HostPath(folder) / "HarborLedge!.cfg"};
}

struct Applier {
  Database& database;
  void operator()(const AddExclude& change) const {
    database.Run("INSERT INTO excluded VALUES(?,?) ON CONFLICT DO NOTHING", change.entry.id,
                 change.entry.name);
  }
  void operator()(const RemoveExclude& change) const {
    database.Run("DELETE FROM excluded WHERE id = ?", change.id);
  }
  void operator()(const RemoveSecondExclude& change) const {
    database.Run("DELETE FROM second_exclude WHERE id = ?", change.id);
  }
  void operator()(const SetContentLog& change) const {
    database.Run("UPDATE switch SET content_log = ?", change.on);
  }
};

}  // namespace

SettingFile::SettingFile(const fs::path& file, Access access) : m_database(Open(file, access)) {}

SettingFile::~SettingFile() = default;

SettingFileContent SettingFile::ReadAll() {
  Transaction view(*m_database, Transaction::Reading());
  SettingFileContent content;
  m_database->Query("SELECT id, printer FROM entry ORDER BY id", [&](const Database::Row& row) {
    content.entries.push_back(ReadEntry(row.Whole(0), row.Text(1)));
  });
  content.drivers = DriverNames();
  content.excluded = Excluded();
  content.secondExcluded = SecondExcluded();
  content.contentLog = m_database->Number("SELECT content_log FROM switch") != 0;
  return content;
}

std::vector<std::string> SettingFile::PrinterNames() {
  return Names(*m_database, "SELECT printer FROM entry WHERE printer <> '*' ORDER BY id");
}

std::vector<std::string> SettingFile::DriverNames() {
  return Names(*m_database, "SELECT name FROM driver ORDER BY id");
}

std::vector<ExcludeRecord> SettingFile::Excluded() {
  return Excludes(*m_database, "SELECT id, name FROM excluded ORDER BY rowid");
}

std::vector<ExcludeRecord> SettingFile::SecondExcluded() {
  return Excludes(*m_database, "SELECT id, name FROM second_exclude ORDER BY rowid");
}

EntryRecord SettingFile::ReadEntry(std::string_view printer) {
  Transaction view(*m_database, Transaction::Reading());
  std::int64_t id = 0;
  m_database->Query(
      "SELECT id FROM entry WHERE printer = ?",
      [&](const Database::Row& row) { id = row.Whole(0); }, printer);
  return ReadEntry(id, std::string(printer));
}

EntryRecord SettingFile::ReadEntry(std::int64_t id, std::string printer) {
  EntryRecord entry;
  entry.printer = std::move(printer);
  m_database->Query(
      "SELECT id, name, text, fontSize, fontName, color, bold, italic, underLine, fit, opacity, "
      "rotate, printPos, positionOption, xOffset, yOffset, repeatFirstAxis, repeatSecondAxis, "
      "repeatHSpace, repeatVSpace FROM watermark WHERE entry = ? ORDER BY position",
      [&](const Database::Row& row) { entry.watermarks.push_back(ReadWatermark(row)); }, id);
  m_database->Query(
      "SELECT position, name, enabled FROM setting WHERE entry = ? ORDER BY position",
      [&](const Database::Row& row) {
        ActiveRecord& setting =
            row.Whole(0) == 0 ? entry.lastSetting : entry.customSettings.emplace_back();
        setting.name = row.Text(1);
        setting.enabled = row.Flag(2);
        m_database->Query(
            "SELECT watermark FROM active WHERE entry = ? AND setting = ? ORDER BY position",
            [&](const Database::Row& active) { setting.watermarks.push_back(active.Text(0)); }, id,
            row.Whole(0));
      },
      id);
  return entry;
}

void SettingFile::WriteEntry(const EntryRecord& entry) {
  Transaction transaction(*m_database);
  m_database->Run("INSERT INTO entry(printer) VALUES(?) ON CONFLICT DO NOTHING", entry.printer);
  std::int64_t id = 0;
  m_database->Query(
      "SELECT id FROM entry WHERE printer = ?",
      [&](const Database::Row& row) { id = row.Whole(0); }, entry.printer);
  m_database->Run("DELETE FROM watermark WHERE entry = ?", id);
  m_database->Run("DELETE FROM setting WHERE entry = ?", id);
  m_database->Run("DELETE FROM active WHERE entry = ?", id);
  for (std::size_t i = 0; i < entry.watermarks.size(); ++i)
    WriteWatermark(*m_database, id, i, entry.watermarks[i]);
  WriteActive(*m_database, id, 0, entry.lastSetting);
  for (std::size_t i = 0; i < entry.customSettings.size(); ++i)
    WriteActive(*m_database, id, i + 1, entry.customSettings[i]);
  transaction.Commit();
}

bool SettingFile::DeletePrinter(std::string_view name) {
  if (name == kDefaultEntry) return false;
  return m_database->Run("DELETE FROM entry WHERE printer = ?", name) != 0;
}

bool SettingFile::DeleteDriver(std::string_view name) {
  return m_database->Run("DELETE FROM driver WHERE name = ?", name) != 0;
}

void SettingFile::Apply(const std::vector<ListChange>& changes) {
  Transaction transaction(*m_database);
  for (const ListChange& change : changes) std::visit(Applier{*m_database}, change);
  transaction.Commit();
  m_database->Checkpoint();
}

SettingPlace FindSettingPlace() {
  static std::mutex guard;
  static MachineState lastState;
  static SettingPlace lastPlace;
  const std::lock_guard lock(guard);
  MachineState state = CurrentMachine();
  if (lastPlace.folder.empty() || state != lastState) {
    lastPlace = AskForPlace();
    lastState = std::move(state);
  }
  return lastPlace;
}

SettingFileContent ReadSettingFile(const fs::path& file) {
  if (!fs::exists(file)) return {};
  return SettingFile(file, SettingFile::Access::kRead).ReadAll();
}

}  // namespace peers
