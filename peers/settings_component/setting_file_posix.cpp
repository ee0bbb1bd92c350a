// The file is a SQLite database in WAL mode (application_id 0x5349474C, user_version 1):
//
//   entry          id, printer              one row for each printer with settings of its own, and
//                                           for the default entry "*"; `id` rises with each new one
//   watermark      entry, position, ...     an entry's watermarks, position 0, 1, ...
//   setting        entry, position, ...     position 0: its last setting, above: custom settings
//   active         entry, setting, position, watermark
//                                           the watermarks that a setting lists
//   driver         id, name                 drivers with settings of their own
//   excluded       id, name                 the exclude list, in the order of rowid
//   second_exclude id, name                 the second exclude list
//   switch         content_log              one row

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iterator>
#include <mutex>
#include <set>
#include <system_error>
#include <tuple>
#include <utility>

#include "peers/descriptor.h"
#include "peers/settings_component/database.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/draft.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/shell.h"

namespace peers {
namespace {

namespace fs = std::filesystem;

constexpr char kDefaultEntry[] = "*";
constexpr std::int64_t kApplicationId = 0x5349474C;
constexpr std::int64_t kVersion = 1;

/// The file holds exactly these: a change here needs another version number.
constexpr const char* kTables[] = {
    R"(CREATE TABLE entry(id INTEGER PRIMARY KEY AUTOINCREMENT, printer TEXT NOT NULL UNIQUE))",
    R"(CREATE TABLE watermark(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, position INTEGER NOT NULL,
    id TEXT NOT NULL, name TEXT NOT NULL, text TEXT NOT NULL, fontSize REAL NOT NULL,
    fontName TEXT NOT NULL, color INTEGER NOT NULL, bold INTEGER NOT NULL, italic INTEGER NOT NULL,
    underLine INTEGER NOT NULL, fit INTEGER NOT NULL, opacity INTEGER NOT NULL,
    rotate INTEGER NOT NULL, printPos INTEGER NOT NULL, positionOption INTEGER NOT NULL,
    xOffset REAL NOT NULL, yOffset REAL NOT NULL, repeatFirstAxis INTEGER NOT NULL,
    repeatSecondAxis INTEGER NOT NULL, repeatHSpace INTEGER NOT NULL,
    repeatVSpace INTEGER NOT NULL, PRIMARY KEY(entry, position)) WITHOUT ROWID)",
    R"(CREATE TABLE setting(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, position INTEGER NOT NULL,
    name TEXT NOT NULL, enabled INTEGER NOT NULL, PRIMARY KEY(entry, position)) WITHOUT ROWID)",
    R"(CREATE TABLE active(
    entry INTEGER NOT NULL REFERENCES entry ON DELETE CASCADE, setting INTEGER NOT NULL,
    position INTEGER NOT NULL, watermark TEXT NOT NULL,
    PRIMARY KEY(entry, setting, position)) WITHOUT ROWID)",
    R"(CREATE TABLE driver(id INTEGER PRIMARY KEY AUTOINCREMENT, name TEXT NOT NULL UNIQUE))",
    R"(CREATE TABLE excluded(id TEXT NOT NULL UNIQUE, name TEXT NOT NULL))",
    R"(CREATE TABLE second_exclude(id TEXT NOT NULL UNIQUE, name TEXT NOT NULL))",
    R"(CREATE TABLE switch(content_log INTEGER NOT NULL))"};
/// SQLite's own, for AUTOINCREMENT.
constexpr char kSequence[] = "CREATE TABLE sqlite_sequence(name,seq)";

constexpr std::uintmax_t kGreatestFile = 256 * 1024 * 1024;

/// Returns the path without links. Throws for a link below the root. Links above it are resolved
/// here, because SQLite refuses any link.
fs::path RealPath(const fs::path& file) {
  const fs::path folder = file.parent_path();
  if (!platform::OpenFolder(folder, platform::Missing::kFails)) ThrowSystemError(folder.string());
  return fs::canonical(folder) / file.filename();
}

/// Builds the file beside its place and links it there when complete; if two processes do so at
/// once, one file stays. Only SQLite has a descriptor of it, because closing another one would
/// release this process's locks on the file.
void Create(const fs::path& file) {
  platform::Draft draft(file);
  draft.File().Reset();
  {
    Database database(RealPath(draft.Path()), SQLITE_OPEN_READWRITE);
    database.Execute("PRAGMA journal_mode = WAL");
    Transaction transaction(database);
    for (const char* table : kTables) database.Execute(table);
    database.Execute(
        "INSERT INTO switch VALUES(0);"
        "PRAGMA application_id = 0x5349474C; PRAGMA user_version = 1");
    transaction.Commit();
  }
  draft.Link();
}

/// Uses an O_PATH descriptor, because closing any other would release this process's locks on the
/// database.
void RequireOrdinaryFile(const fs::path& file) {
  if (!platform::Open(file, O_PATH)) ThrowSystemError(file.string());
  if (fs::file_size(file) > kGreatestFile) throw DatabaseError("more than 256 MiB");
}

/// Throws the system's own error, where SQLite would only say that it cannot open the file.
void RequireReadable(const fs::path& file) {
  if (faccessat(AT_FDCWD, file.c_str(), R_OK, AT_EACCESS) != 0) ThrowSystemError(file.string());
}

/// Throws DatabaseError for a file with other tables, indexes, views or triggers.
void RequireSchema(Database& database) {
  if (database.Number("PRAGMA application_id") != kApplicationId)
    throw DatabaseError("not a setting file");
  const std::int64_t version = database.Number("PRAGMA user_version");
  if (version != kVersion)
    throw DatabaseError("it has version " + std::to_string(version) + "; only " +
                        std::to_string(kVersion) + " is known here");
  std::multiset<std::string> expected(std::begin(kTables), std::end(kTables));
  expected.insert(kSequence);
  std::multiset<std::string> found;
  database.Query("SELECT type, name, sql FROM sqlite_schema", [&](const Database::Row& row) {
    // SQLite makes an index without SQL for each key.
    const bool isKey = row.Text(0) == "index" && row.Text(2).empty();
    if (isKey) return;
    if (!expected.contains(row.Text(2)))
      throw DatabaseError("foreign " + row.Text(0) + " \"" + row.Text(1) + "\" in it");
    found.insert(row.Text(2));
  });
  if (found != expected) throw DatabaseError("a table is missing in it");
}

bool MayWrite(const fs::path& path) {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::unique_ptr<Database> Checked(std::unique_ptr<Database> database) {
  RequireSchema(*database);
  return database;
}

/// Opens read-write if possible: only a writer removes -wal and -shm. If that fails, also for want
/// of room on the disk, a file without changes in its -wal is read as it lies.
std::unique_ptr<Database> OpenToRead(const fs::path& file) {
  std::error_code missing;
  const auto waiting = fs::file_size(fs::path(file) += "-wal", missing);
  const bool isAlone = missing || waiting == 0;
  if (MayWrite(file) && MayWrite(file.parent_path())) {
    try {
      return Checked(std::make_unique<Database>(file, SQLITE_OPEN_READWRITE));
    } catch (const DatabaseError&) {
      if (!isAlone) throw;
    }
  }
  if (isAlone) return Checked(std::make_unique<Database>(file, Database::AsItLies()));
  return Checked(std::make_unique<Database>(file, SQLITE_OPEN_READONLY));
}

/// Gives -wal and -shm the mode of the setting file: if they were made while it was read-only,
/// nobody could write after it is writable again.
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

std::unique_ptr<Database> Open(const fs::path& file, SettingFile::Access access) {
  if (access == SettingFile::Access::kCreate && !fs::exists(file)) Create(file);
  RequireOrdinaryFile(file);
  const fs::path real = RealPath(file);
  if (access == SettingFile::Access::kRead) return OpenToRead(real);
  LetModesFollow(real);
  auto database = Checked(std::make_unique<Database>(real, SQLITE_OPEN_READWRITE));
  database->Execute("PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON");
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

/// Identifies one state of machine.ini. The place is kept as long as the state is the same, because
/// each handle on the component asks for it, and reading a machine with many printers takes long.
using MachineState = std::tuple<fs::path, time_t, long, off_t>;

MachineState CurrentMachine() {
  struct stat status = {};  // as it is when there is no such file
  fs::path file = platform::MachineRoot() / "machine.ini";
  stat(file.c_str(), &status);
  return {std::move(file), status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_size};
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
  RequireReadable(file);
  return SettingFile(file, SettingFile::Access::kRead).ReadAll();
}

void CheckSettingFile(const fs::path& file) {
  RequireReadable(file);
  RequireOrdinaryFile(file);
  Checked(std::make_unique<Database>(RealPath(file), Database::AsItLies()));
}

}  // namespace peers
