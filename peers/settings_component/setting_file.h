#pragma once

// The setting file: what the Settings component keeps, as plain records, and the operations on it.
// Text is UTF-8; an `id` is a GUID in its hyphenated text form, lower case.
//
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
//
// Each operation that changes something is one transaction: after a crash of the process the file
// holds it whole or not at all. Only Apply also waits for the disk, and with that for everything
// before it; a power failure may take back what came after the last Apply, in whole transactions.
//
// The file is read as data: with a table, an index, a view or a trigger in it that is not one of
// these, to the letter, or with more than 256 MiB, it is no setting file. Neither is one whose
// reading takes more work than a sound file of its size (see database.h).
//
// All failures are thrown: DatabaseError, or std::system_error for the file itself. A file that is
// no setting file is left as it is.

#include <compare>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace peers {

class Database;

struct WatermarkRecord {
  std::string id;
  std::string name;
  std::string text;
  double fontSize = 0;
  std::string fontName;
  std::int32_t color = 0;
  bool bold = false;
  bool italic = false;
  bool underLine = false;
  bool fit = false;
  std::int32_t opacity = 0;
  std::int32_t rotate = 0;
  std::int32_t printPos = 0;
  std::int32_t positionOption = 0;
  double xOffset = 0;
  double yOffset = 0;
  bool repeatFirstAxis = false;
  bool repeatSecondAxis = false;
  std::int32_t repeatHSpace = 0;
  std::int32_t repeatVSpace = 0;

  auto operator<=>(const WatermarkRecord&) const = default;
};

/// A last setting or a custom setting: which watermarks are active, and whether they are at all.
struct ActiveRecord {
  std::string name;
  bool enabled = false;
  std::vector<std::string> watermarks;
};

struct EntryRecord {
  std::string printer;
  ActiveRecord lastSetting;
  std::vector<ActiveRecord> customSettings;
  std::vector<WatermarkRecord> watermarks;
};

struct ExcludeRecord {
  std::string id;
  std::string name;
};

struct SettingFileContent {
  std::vector<EntryRecord> entries;
  std::vector<std::string> drivers;
  std::vector<ExcludeRecord> excluded;
  std::vector<ExcludeRecord> secondExcluded;
  bool contentLog = false;
};

/// The changes that an entry has no part in.
struct AddExclude {
  ExcludeRecord entry;
};
struct RemoveExclude {
  std::string id;
};
struct RemoveSecondExclude {
  std::string id;
};
struct SetContentLog {
  bool on;
};
using ListChange = std::variant<AddExclude, RemoveExclude, RemoveSecondExclude, SetContentLog>;

class SettingFile {
 public:
  enum class Access {
    kRead,
    kWrite,
    kCreate,  ///< To write; a missing file is made, and is whole when others first see it.
  };

  SettingFile(const std::filesystem::path& file, Access access);
  ~SettingFile();

  SettingFileContent ReadAll();

  /// Printers with settings of their own, without the default entry, in the order of their making.
  std::vector<std::string> PrinterNames();
  std::vector<std::string> DriverNames();
  std::vector<ExcludeRecord> Excluded();
  std::vector<ExcludeRecord> SecondExcluded();

  /// An entry that is not there reads as an empty one.
  EntryRecord ReadEntry(std::string_view printer);
  /// Replaces the entry of that name, or adds it.
  void WriteEntry(const EntryRecord& entry);
  /// False when there is no such setting. The default entry cannot be deleted.
  bool DeletePrinter(std::string_view name);
  bool DeleteDriver(std::string_view name);

  /// Makes all changes or none.
  void Apply(const std::vector<ListChange>& changes);

 private:
  EntryRecord ReadEntry(std::int64_t id, std::string printer);

  std::unique_ptr<Database> m_database;
};

/// Where the current machine has its setting file.
struct SettingPlace {
  std::wstring folder;         ///< A Windows path without a backslash at its end.
  std::filesystem::path file;  ///< The file itself, on the host.
};
SettingPlace FindSettingPlace();

/// Everything in the setting file `file`, without changing it; a missing file reads as empty. It
/// takes no right to write.
SettingFileContent ReadSettingFile(const std::filesystem::path& file);

/// Throws what the component would fail on with this file, as far as its head and its tables tell.
/// Makes no file beside it.
void CheckSettingFile(const std::filesystem::path& file);

}  // namespace peers
