#pragma once

// The setting file of the Settings component, as plain records.
// Text is UTF-8; an `id` is a GUID in its hyphenated text form, lower case.
//
// On Linux it is a SQLite database (setting_file_posix.cpp). Each operation that changes something
// is one transaction there: after a crash of the process the file holds the change whole or not at
// all. Only Apply waits for the disk: after a power failure, whole transactions since the last
// Apply may be lost. The file may be hostile. It is refused if it has more than 256 MiB, if its
// tables are not exactly these, if it has an index, a view or a trigger, and if reading it takes
// more work than a sound file of its size (see database.h).
//
// On Windows, where the component serves rehearsals alone, the records live in memory, and the file
// is one JSON object, which is read and written once by each SettingFile.
//
// Failures throw DatabaseError, or std::system_error for the file itself; on Windows
// std::runtime_error. A refused file is not changed.

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

/// Changes outside the entries.
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
    kCreate,  ///< As kWrite; a missing file is made, complete when others first see it.
  };

  SettingFile(const std::filesystem::path& file, Access access);
  ~SettingFile();

  SettingFileContent ReadAll();

  /// Returns the printers with settings of their own, oldest first, without the default entry.
  std::vector<std::string> PrinterNames();
  std::vector<std::string> DriverNames();
  std::vector<ExcludeRecord> Excluded();
  std::vector<ExcludeRecord> SecondExcluded();

  /// Returns an empty entry if there is none.
  EntryRecord ReadEntry(std::string_view printer);
  /// Replaces the entry of that name, or adds it.
  void WriteEntry(const EntryRecord& entry);
  /// Returns false when there is no such setting, and for the default entry, which stays.
  bool DeletePrinter(std::string_view name);
  bool DeleteDriver(std::string_view name);

  /// Makes all changes or none.
  void Apply(const std::vector<ListChange>& changes);

 private:
  EntryRecord ReadEntry(std::int64_t id, std::string printer);

  std::unique_ptr<Database> m_database;
};

/// The place of the current machine's setting file.
struct SettingPlace {
  std::wstring folder;         ///< A Windows path without a backslash at its end.
  std::filesystem::path file;  ///< The file itself, on the host.
};
SettingPlace FindSettingPlace();

/// Returns the contents of the setting file `file`, which may be read-only and is not changed; a
/// missing file is empty.
SettingFileContent ReadSettingFile(const std::filesystem::path& file);

/// Throws if the component would refuse this file because of its header or its tables. Makes no
/// file beside it.
void CheckSettingFile(const std::filesystem::path& file);

}  // namespace peers
