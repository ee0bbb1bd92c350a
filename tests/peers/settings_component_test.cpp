#include "peers/settings_component/settings_component.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <fstream>
#include <functional>
#include <memory>
#include <thread>

#include "peers/settings_component/setting_file.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;

const std::wstring kFile =
    L"C:\\Users\\tanaka\\AppData\\LocalLow\\KBR-LTD\\HarborLedge!\\HarborLedge!.cfg";

fs::path File() {
  return peers::FindSettingPlace().file;
}

struct Give {
  void operator()(Sigil::Object* object) const { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Give>;

/// What `make` hands out.
template <class Interface>
Held<Interface> Take(auto make) {
  Interface* made = nullptr;
  EXPECT_EQ(make(&made), 0);
  return Held<Interface>(made);
}

Held<Sigil::Settings> Open() {
  return Held<Sigil::Settings>(peers::CreateSettings());
}

Held<Sigil::PrinterSettings> Entry(Sigil::Settings& settings, const wchar_t* name) {
  return Take<Sigil::PrinterSettings>(
      [&](auto out) { return settings.GetPrinterSettings(name, out); });
}

GUID Add(Sigil::PrinterSettings& entry, const wchar_t* name) {
  const auto mark = Take<Sigil::Watermark>([&](auto out) { return entry.CreateWatermark(out); });
  GUID id{};
  EXPECT_EQ(mark->SetName(name) | mark->GetId(&id), 0);
  return id;
}

std::int32_t Keep(auto& object) {
  return object.Commit() | object.Save(0);
}

/// Rows of the setting file, past the component.
std::string Sql(const char* statements) {
  std::string rows;
  const auto addRow = [](void* all, int count, char** cells, char**) {
    for (int i = 0; i < count; ++i)
      *static_cast<std::string*>(all) +=
          (cells[i] ? cells[i] : "") + std::string(1, i + 1 < count ? ' ' : '\n');
    return 0;
  };
  sqlite3* file = nullptr;
  EXPECT_EQ(sqlite3_open(File().c_str(), &file), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(file, statements, addRow, &rows, nullptr), SQLITE_OK);
  sqlite3_close(file);
  return rows;
}

std::string Show() {
  return Sql(R"(
    SELECT 'content log' FROM switch WHERE content_log;
    SELECT printer || ':', IIF(position, setting.name, 'last'), IIF(enabled, 'on', 'off'),
           (SELECT group_concat(IFNULL(name, 'gone'), ' ')
            FROM active LEFT JOIN watermark ON id = watermark AND watermark.entry = active.entry
            WHERE active.entry = entry.id AND setting = setting.position)
    FROM entry JOIN setting ON entry.id = entry ORDER BY entry, position;
    SELECT printer, 'has', name FROM entry JOIN watermark ON entry.id = entry
    ORDER BY entry, position;
    SELECT 'driver', name FROM driver;
    SELECT 'excluded', name FROM excluded ORDER BY rowid;
    SELECT 'second', name FROM second_exclude ORDER BY rowid)");
}

/// Runs `action` in a process of its own.
pid_t Fork(const std::function<void()>& action) {
  const pid_t child = fork();
  if (child != 0) return child;
  action();
  _exit(testing::Test::HasFailure());
}

int StatusOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST(SettingsComponent, KeepsWhatIsCommittedAndSavedAndNothingElse) {
  const tests::TestMachine machine;
  const auto settings = Open();
  auto entry = Entry(*settings, L"*");
  const GUID marks[] = {Add(*entry, L"E2_甲"), Add(*entry, L"E1_乙"), Add(*entry, L"extra")};
  Sigil::LastSetting* none = nullptr;
  EXPECT_LT(entry->GetCustomSetting(L"HLMimosaOption", &none), 0);
  auto custom = Take<Sigil::LastSetting>([&](auto out) { return entry->CreateCustomSetting(out); });
  EXPECT_EQ(custom->SetName(L"HLMimosaOption") | custom->SetWatermarks(marks, 2), 0);
  EXPECT_EQ(custom->SetEnable(1) | entry->DeleteWatermark(&marks[2]), 0);
  EXPECT_LT(entry->DeleteWatermark(&marks[2]), 0);
  EXPECT_EQ(entry->Commit(), 0);
  custom->SetEnable(0);  // too late for this save
  EXPECT_EQ(entry->Save(0), 0);
  const std::string saved =
      "*: last off \n*: HLMimosaOption on E2_甲 E1_乙\n* has E2_甲\n* has E1_乙\n";
  EXPECT_EQ(Show(), saved);

  entry = Entry(*settings, L"*");
  custom = Take<Sigil::LastSetting>(
      [&](auto out) { return entry->GetCustomSetting(L"HLMimosaOption", out); });
  const auto last = Take<Sigil::LastSetting>([&](auto out) { return entry->GetLastSetting(out); });
  EXPECT_EQ(custom->SetEnable(0) | last->SetEnable(1) | last->SetWatermarks(&marks[1], 1), 0);
  EXPECT_EQ(entry->DeleteWatermark(&marks[0]), 0);
  EXPECT_EQ(Show(), saved) << "nothing saved yet";
  EXPECT_EQ(Keep(*entry) | Keep(*Entry(*settings, L"会議室")), 0);
  Sql("INSERT INTO driver(name) VALUES('d'); INSERT INTO second_exclude VALUES"
      "('00000000-0000-0000-0000-000000000001', 's1'),"
      "('00000000-0000-0000-0000-000000000002', 's2')");
  GUID first{}, second{}, listed{};
  EXPECT_EQ(settings->AddExcludePrinter(L"first", &first), 0);
  EXPECT_EQ(settings->AddExcludePrinter(L"second", &second), 0);
  EXPECT_LT(settings->DeleteSecondExclude(&first), 0);
  EXPECT_EQ(settings->SetUseContentLog(1) | settings->Commit(), 0);
  EXPECT_EQ(settings->DeleteExcludePrinter(&first), 0);
  EXPECT_EQ(settings->GetExcludePrinterCount(), 1);
  EXPECT_EQ(settings->Save(0), 0);
  const std::string entries = "*: last on E1_乙\n*: HLMimosaOption off gone E1_乙\n";
  EXPECT_EQ(Show(), "content log\n" + entries +
                        "会議室: last off \n* has E1_乙\ndriver d\nexcluded first\n"
                        "excluded second\nsecond s1\nsecond s2\n");

  // Deletions of individual settings are lasting at once, and never those of the default entry.
  EXPECT_EQ(settings->DeletePrinterSetting(kFile.c_str(), L"会議室"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"会議室"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"*"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(L"C:\\no such.cfg", L"*"), 0);
  EXPECT_EQ(settings->DeleteDriverSetting(kFile.c_str(), L"d"), 0);
  std::uint32_t length = 0;
  EXPECT_EQ(settings->GetSecondExclude(1, &listed, nullptr, &length), 0);
  EXPECT_EQ(settings->DeleteSecondExclude(&listed), 0);
  EXPECT_EQ(Keep(*settings), 0) << "with the deletion of before";
  EXPECT_EQ(Show(), "content log\n" + entries + "* has E1_乙\nexcluded second\nsecond s1\n");
}

/// A table whose root has some hundred leaves becomes one of seven levels: on each page every child
/// is the page of the next level. There are more rows than anybody can read.
void MakeEndless(std::string& file, std::uint32_t page) {
  constexpr std::size_t kPage = 4096;
  const std::string root = file.substr((page - 1) * kPage, kPage);
  const auto half = [&root](std::size_t at) {
    return static_cast<std::size_t>(static_cast<std::uint8_t>(root[at]) * 256 +
                                    static_cast<std::uint8_t>(root[at + 1]));
  };
  const auto childAt = [&half](std::size_t cell) { return half(12 + 2 * cell); };
  for (std::size_t level = 0; level < 6; ++level) {
    const std::string next = root.substr(childAt(level), 4);
    std::string made = root;
    made.replace(8, 4, next);
    for (std::size_t cell = 0; cell < half(3); ++cell) made.replace(childAt(cell), 4, next);
    file.replace((page - 1) * kPage, kPage, made);
    page = static_cast<std::uint32_t>(half(childAt(level) + 2));
  }
}

TEST(SettingsComponent, GivesUpAFileThatIsReadWithoutEnd) {
  tests::TestMachine machine;
  EXPECT_EQ(Open()->GetExcludePrinterCount(), 0);
  Sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300)"
      "INSERT INTO excluded SELECT i, printf('%3000d', i) FROM n");
  EXPECT_EQ(peers::ReadSettingFile(File()).excluded.size(), 300u);
  std::string file = machine.Read(kFile);
  const auto root = std::stoul(Sql("SELECT rootpage FROM sqlite_schema WHERE name = 'excluded'"));
  MakeEndless(file, static_cast<std::uint32_t>(root));
  machine.Write(kFile, file);
  EXPECT_THAT([] { peers::ReadSettingFile(File()); },
              testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr("more work")));
  EXPECT_LT(Open()->GetExcludePrinterCount(), 0);
  EXPECT_EQ(Keep(*Entry(*Open(), L"*")), 0) << "the rest of it is sound";
}

TEST(SettingsComponent, AddsNothingToAListThatCouldNotBeRead) {
  tests::TestMachine machine;
  GUID id{};
  auto settings = Open();
  settings->AddExcludePrinter(L"old", &id);
  EXPECT_EQ(Keep(*settings), 0);
  settings = Open();
  const std::string bytes = machine.Read(kFile);
  machine.Write(kFile, "for a moment");
  EXPECT_LT(settings->GetExcludePrinterCount(), 0);
  machine.Write(kFile, bytes);
  EXPECT_EQ(settings->AddExcludePrinter(L"new", &id), 0);
  EXPECT_LT(Keep(*settings), 0);
  EXPECT_EQ(Show(), "excluded old\n");
  EXPECT_EQ(settings->GetExcludePrinterCount(), 2) << "the file's and its own";
  EXPECT_EQ(settings->Save(0), 0);
  EXPECT_EQ(Show(), "excluded old\nexcluded new\n");
}

TEST(SettingsComponent, LeavesAFileOfALaterVersionAsItIs) {
  tests::TestMachine machine;
  GUID id{};
  auto settings = Open();
  settings->AddExcludePrinter(L"old", &id);
  EXPECT_EQ(Keep(*settings), 0);
  settings.reset();
  Sql("ALTER TABLE switch ADD COLUMN later; PRAGMA user_version = 2");
  const std::string bytes = machine.Read(kFile);
  EXPECT_THAT([] { peers::ReadSettingFile(File()); },
              testing::ThrowsMessage<std::runtime_error>(testing::HasSubstr("version 2")));
  settings = Open();
  Sigil::PrinterSettings* entry = nullptr;
  EXPECT_LT(settings->GetExcludePrinterCount(), 0);
  EXPECT_LT(settings->GetPrinterSettings(L"*", &entry), 0);
  EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"p"), 0);
  EXPECT_LT(settings->DeleteExcludePrinter(&id), 0);
  settings->AddExcludePrinter(L"new", &id);
  settings->SetUseContentLog(1);
  EXPECT_LT(Keep(*settings), 0);
  EXPECT_EQ(machine.Read(kFile), bytes);
}

TEST(SettingsComponent, WritesAgainToWhatWasReadOnlyForAWhile) {
  const tests::TestMachine machine;
  EXPECT_EQ(Keep(*Open()), 0);
  // Made by SQLite while the setting file was read-only, and left by a process that died.
  const std::string shared = File().string() + "-shm";
  std::ofstream(shared) << std::string(0x8000, '\0');
  fs::permissions(shared, fs::perms::owner_read);
  const auto settings = Open();
  EXPECT_EQ(settings->GetExcludePrinterCount(), 0);
  EXPECT_EQ(fs::status(shared).permissions(), fs::status(File()).permissions());
}

TEST(SettingsComponent, EndsNoProcessWhereTheSizeOfFilesIsLimited) {
  tests::TestMachine machine;
  EXPECT_EQ(Keep(*Entry(*Open(), L"甲")), 0);
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  int failures = 0;
  for (rlim_t size = 0; size < 0x20000; size += 0x1000) {
    const rlimit less = {size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &less);
    const auto settings = Open();
    Sigil::PrinterSettings* entry = nullptr;
    const std::int32_t got = settings->GetPrinterSettings(L"乙", &entry);
    const Held<Sigil::PrinterSettings> held(entry);
    if (got < 0 || Keep(*held) < 0) ++failures;
    setrlimit(RLIMIT_FSIZE, &before);
  }
  EXPECT_GT(failures, 2);
  EXPECT_EQ(Keep(*Entry(*Open(), L"丙")), 0);
  EXPECT_EQ(Open()->GetPrinterSettingCount(), 3);
}

TEST(SettingsComponent, LocksOutOthers) {
  const tests::TestMachine machine;
  constexpr int kProcesses = 3, kRounds = 20;
  const auto add = [] {
    for (int i = 0; i < kRounds; ++i) {
      const auto settings = Open();
      EXPECT_EQ(settings->Lock() | settings->Lock() | settings->UnLock(), 0) << "it nests";
      // Lost unless each round sees what the one before has saved.
      const std::int32_t count = settings->GetExcludePrinterCount();
      GUID id{};
      settings->AddExcludePrinter(std::to_wstring(count).c_str(), &id);
      EXPECT_EQ(Keep(*settings) | settings->UnLock(), 0);
    }
  };
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) children.push_back(Fork(add));
  std::thread(add).join();
  for (const pid_t child : children) EXPECT_EQ(StatusOf(child), 0);
  std::string expected;
  for (int i = 0; i < (kProcesses + 1) * kRounds; ++i)
    expected += "excluded " + std::to_string(i) + "\n";
  EXPECT_EQ(Show(), expected);
}

TEST(SettingsComponent, SurvivesTheDeathOfItsProcess) {
  const tests::TestMachine machine;
  const auto fill = [](Sigil::PrinterSettings& entry, int round) {
    GUID id{};
    wchar_t name[8];
    while (entry.GetWatermarkInfo(0, &id, name, 7) == 0) entry.DeleteWatermark(&id);
    for (int i = 0; i < 200; ++i) Add(entry, std::to_wstring(round).c_str());
    return Keep(entry);
  };
  for (int round = 0; round < 12; ++round) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = Fork([&] {
      const auto settings = Open();
      settings->Lock();
      const auto entry = Entry(*settings, L"p");
      for (int i = 1000 * round;; ++i)
        if (fill(*entry, i) != 0 || write(ready[1], "", 1) != 1) return;
    });
    close(ready[1]);
    char byte;
    EXPECT_EQ(read(ready[0], &byte, 1), 1) << "neither file nor lock is held by the dead";
    std::this_thread::sleep_for(std::chrono::microseconds(700 * round));
    kill(child, SIGKILL);
    StatusOf(child);
    close(ready[0]);
    EXPECT_EQ(Sql("SELECT count(*), count(DISTINCT name) FROM watermark"), "200 1\n")
        << "a record half saved";
  }
}

}  // namespace
