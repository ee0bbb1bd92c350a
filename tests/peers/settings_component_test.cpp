#include "peers/settings_component/settings_component.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <memory>
#include <set>
#include <thread>

#include "peers/settings_component/guid.h"
#include "peers/settings_component/setting_file.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using platform::ToUtf8;

constexpr wchar_t kFolder[] = L"C:\\Users\\tanaka\\AppData\\LocalLow\\KBR-LTD\\HarborLedge!";
const std::wstring kFile = std::wstring(kFolder) + L"\\HarborLedge!.cfg";

struct Give {
  void operator()(Sigil::Object* object) const { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Give>;

Held<Sigil::Settings> Open() {
  return Held<Sigil::Settings>(peers::CreateSettings());
}

Held<Sigil::PrinterSettings> Entry(Sigil::Settings& settings, const wchar_t* name) {
  Sigil::PrinterSettings* entry = nullptr;
  EXPECT_EQ(settings.GetPrinterSettings(name, &entry), 0);
  return Held<Sigil::PrinterSettings>(entry);
}

GUID Add(Sigil::PrinterSettings& entry, const wchar_t* name) {
  Sigil::Watermark* made = nullptr;
  EXPECT_EQ(entry.CreateWatermark(&made), 0);
  const Held<Sigil::Watermark> mark(made);
  GUID id{};
  EXPECT_EQ(mark->SetName(name) | mark->GetId(&id), 0);
  return id;
}

template <class Kept>
std::int32_t Keep(Kept& object) {
  return object.Commit() | object.Save(0);
}

std::string Show(const peers::EntryRecord& entry, const peers::ActiveRecord& setting) {
  std::string text = "  " + setting.name + (setting.enabled ? " on:" : " off:");
  for (const std::string& id : setting.watermarks) {
    const auto mark = std::find_if(entry.watermarks.begin(), entry.watermarks.end(),
                                   [&](const auto& each) { return each.id == id; });
    text += " " + (mark == entry.watermarks.end() ? "gone" : mark->name);
  }
  return text + "\n";
}

/// The whole setting file, read by other code than the component's interfaces.
std::string Show() {
  const peers::SettingFileContent content = peers::ReadSettingFile(peers::FindSettingPlace().file);
  std::string text = content.contentLog ? "content log\n" : "";
  for (const peers::EntryRecord& entry : content.entries) {
    text += "entry " + entry.printer + "\n" + Show(entry, entry.lastSetting);
    for (const auto& setting : entry.customSettings) text += Show(entry, setting);
    for (const auto& mark : entry.watermarks) text += "  mark " + mark.name + "\n";
  }
  for (const std::string& name : content.drivers) text += "driver " + name + "\n";
  for (const auto& each : content.excluded) text += "excluded " + each.name + "\n";
  for (const auto& each : content.secondExcluded) text += "second " + each.name + "\n";
  return text;
}

std::string Bytes(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void Sql(const fs::path& file, const std::string& sql) {
  sqlite3* connection = nullptr;
  ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(connection);
}

/// Runs `action` in a process of its own.
pid_t Fork(const std::function<void()>& action) {
  const pid_t child = fork();
  if (child == 0) {
    action();
    _exit(testing::Test::HasFailure());
  }
  return child;
}

int StatusOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST(SettingsComponent, KeepsWhatIsCommittedAndSavedAndNothingElse) {
  const tests::TestMachine machine;
  EXPECT_EQ(Show(), "");
  const auto settings = Open();
  auto entry = Entry(*settings, L"*");
  const GUID marks[] = {Add(*entry, L"E2_甲"), Add(*entry, L"E1_乙"), Add(*entry, L"extra")};
  Sigil::LastSetting* setting = nullptr;
  EXPECT_LT(entry->GetCustomSetting(L"HLMimosaOption", &setting), 0);
  EXPECT_EQ(entry->CreateCustomSetting(&setting), 0);
  Held<Sigil::LastSetting> custom(setting);
  EXPECT_EQ(custom->SetName(L"HLMimosaOption") | custom->SetWatermarks(marks, 2), 0);
  EXPECT_EQ(custom->SetEnable(1), 0);
  EXPECT_EQ(entry->DeleteWatermark(&marks[2]), 0);
  EXPECT_LT(entry->DeleteWatermark(&marks[2]), 0);
  EXPECT_EQ(entry->Commit(), 0);
  custom->SetEnable(0);  // too late for this save
  EXPECT_EQ(entry->Save(0), 0);
  const std::string saved =
      "entry *\n   off:\n  HLMimosaOption on: E2_甲 E1_乙\n  mark E2_甲\n  mark E1_乙\n";
  EXPECT_EQ(Show(), saved);

  entry = Entry(*settings, L"*");
  custom.reset(entry->GetCustomSetting(L"HLMimosaOption", &setting) == 0 ? setting : nullptr);
  EXPECT_EQ(entry->GetLastSetting(&setting), 0);
  const Held<Sigil::LastSetting> last(setting);
  custom->SetEnable(0);
  last->SetEnable(1);
  last->SetWatermarks(&marks[1], 1);
  entry->DeleteWatermark(&marks[0]);
  EXPECT_EQ(Show(), saved) << "nothing saved yet";
  EXPECT_EQ(Keep(*entry), 0);
  EXPECT_EQ(Keep(*Entry(*settings, L"会議室")), 0);
  Sql(peers::FindSettingPlace().file,
      "INSERT INTO driver(name) VALUES('d'); INSERT INTO second_exclude VALUES"
      "('00000000-0000-0000-0000-000000000001', 's1'), ('00000000-0000-0000-0000-000000000002', "
      "'s2')");

  GUID first{}, second{};
  EXPECT_EQ(settings->AddExcludePrinter(L"first", &first), 0);
  EXPECT_EQ(settings->AddExcludePrinter(L"second", &second), 0);
  const GUID unknown{7, 0, 0, {}};
  EXPECT_LT(settings->DeleteSecondExclude(&unknown), 0);
  EXPECT_EQ(settings->SetUseContentLog(1) | settings->Commit(), 0);
  EXPECT_EQ(settings->DeleteExcludePrinter(&first), 0);
  EXPECT_EQ(settings->GetExcludePrinterCount(), 1);
  EXPECT_EQ(settings->Save(0), 0);
  const std::string entries =
      "entry *\n   on: E1_乙\n  HLMimosaOption off: gone E1_乙\n  mark E1_乙\n";
  EXPECT_EQ(Show(), "content log\n" + entries +
                        "entry 会議室\n   off:\ndriver d\nexcluded first\nexcluded second\n"
                        "second s1\nsecond s2\n");

  // Deletions of individual settings are lasting at once, and never those of the default entry.
  EXPECT_EQ(settings->DeletePrinterSetting(kFile.c_str(), L"会議室"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"会議室"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"*"), 0);
  EXPECT_LT(settings->DeletePrinterSetting(L"C:\\no such.cfg", L"*"), 0);
  EXPECT_EQ(settings->DeleteDriverSetting(kFile.c_str(), L"d"), 0);
  GUID listed{};
  std::uint32_t length = 0;
  EXPECT_EQ(settings->GetSecondExclude(1, &listed, nullptr, &length), 0);
  EXPECT_EQ(settings->DeleteSecondExclude(&listed), 0);
  EXPECT_EQ(Keep(*settings), 0) << "with the deletion of before";
  EXPECT_EQ(Show(), "content log\n" + entries + "excluded second\nsecond s1\n");
}

TEST(SettingsComponent, KeepsEveryProperty) {
  const tests::TestMachine machine;
  const auto settings = Open();
  const auto entry = Entry(*settings, L"p");
  Sigil::Watermark* made = nullptr;
  entry->CreateWatermark(&made);
  const Held<Sigil::Watermark> mark(made);
  const std::wstring huge(3'000'000, L'透');
  EXPECT_EQ(mark->SetName(L"a\xD83Dz") | mark->SetText(huge.c_str()) | mark->SetFontName(L"明朝"),
            0);
  EXPECT_EQ(mark->SetFontSize(10.5) | mark->SetXOffset(-0.25) | mark->SetYOffset(1e3), 0);
  EXPECT_EQ(mark->SetBold(1) | mark->SetUnderLine(1) | mark->SetRepeatFirstAxis(2), 0);
  EXPECT_EQ(mark->SetItalic(0) | mark->SetFit(0) | mark->SetRepeatSecondAxis(0), 0);
  EXPECT_EQ(mark->SetColor(0xFFFFFF) | mark->SetRotate(359) | mark->SetPrintPos(8), 0);
  EXPECT_EQ(mark->SetOpacity(99) | mark->SetPositionOption(3), 0);
  EXPECT_EQ(mark->SetRepeatVSpace(-1000) | mark->SetRepeatHSpace(7), 0);
  EXPECT_LT(mark->SetXOffset(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_LT(mark->SetText(nullptr), 0);
  ASSERT_EQ(Keep(*entry), 0);

  const auto read =
      peers::ReadSettingFile(peers::FindSettingPlace().file).entries.at(0).watermarks.at(0);
  EXPECT_EQ(read.name + read.fontName, "a\xEF\xBF\xBDz明朝");
  EXPECT_EQ(read.text, ToUtf8(huge));
  EXPECT_EQ((std::vector{read.fontSize, read.xOffset, read.yOffset}),
            (std::vector{10.5, -0.25, 1e3}));
  EXPECT_EQ((std::vector{read.bold, read.italic, read.underLine, read.fit, read.repeatFirstAxis,
                         read.repeatSecondAxis}),
            (std::vector{true, false, true, false, true, false}));
  EXPECT_EQ((std::vector{read.color, read.rotate, read.printPos, read.opacity, read.positionOption,
                         read.repeatVSpace, read.repeatHSpace}),
            (std::vector{0xFFFFFF, 359, 8, 99, 3, -1000, 7}));
}

TEST(SettingsComponent, GivesTextsToBuffersOfAnySize) {
  const tests::TestMachine machine;
  const auto settings = Open();
  for (const wchar_t* name : {L"b", L"*", L"いろは", L"a"}) {
    const auto entry = Entry(*settings, name);
    Add(*entry, L"0123456789");
    EXPECT_EQ(Keep(*entry) | Keep(*entry), 0) << "a second save keeps the place in the list";
  }
  std::uint32_t length = 0;
  EXPECT_EQ(settings->GetSettingFileDir(nullptr, &length), 0);
  std::wstring folder(length, L'?');
  EXPECT_EQ(settings->GetSettingFileDir(folder.data(), &length), 0);
  EXPECT_EQ(folder, std::wstring(kFolder) + L'\0');

  EXPECT_EQ(settings->GetPrinterSettingCount(), 3);
  std::wstring names;
  for (int i = 0; i < 3; ++i) {
    wchar_t name[256];
    std::uint32_t capacity = 256;
    EXPECT_EQ(settings->GetPrinterSettingName(i, name, &capacity), 0);
    names += name + std::to_wstring(capacity) + L" ";
  }
  EXPECT_EQ(names, L"b2 いろは4 a2 ");
  wchar_t small[4] = {L'x', L'y', L'z', L'!'};
  std::uint32_t capacity = 3;
  EXPECT_EQ(settings->GetPrinterSettingName(1, small, &capacity), Sigil::kTargetTooSmall);
  EXPECT_EQ(std::wstring(small, 4) + std::to_wstring(capacity), L"xyz!4");

  GUID id{};
  EXPECT_EQ(Entry(*settings, L"a")->GetWatermarkInfo(0, &id, small, 2), 0);
  EXPECT_EQ(std::wstring(small, 4), std::wstring(L"01\0!", 4)) << "cut, and no further written";
}

template <class... Results>
void ExpectRefused(Results... results) {
  int place = 0;
  for (const std::int32_t result : {results...}) EXPECT_LT(result, 0) << "after " << place++;
}

TEST(SettingsComponent, RefusesWhatItCannotServe) {
  const tests::TestMachine machine;
  const auto settings = Open();
  const auto entry = Entry(*settings, L"p");
  Add(*entry, L"m");
  Sigil::LastSetting* setting = nullptr;
  entry->GetLastSetting(&setting);
  const Held<Sigil::LastSetting> last(setting);
  GUID id{};
  std::uint32_t length = 1;
  wchar_t buffer[2];
  ExpectRefused(
      settings->Save(1), entry->Save(1), settings->UnLock(),
      settings->GetSettingFileDir(buffer, nullptr), settings->GetPrinterSettings(nullptr, nullptr),
      settings->GetPrinterSettingName(0, buffer, &length),
      settings->GetPrinterSettingName(-1, buffer, &length),
      settings->GetDriverSettingName(0, buffer, nullptr),
      settings->DeletePrinterSetting(nullptr, L"p"),
      settings->DeleteDriverSetting(kFile.c_str(), nullptr),
      settings->GetExcludePrinter(0, &id, nullptr, &length),
      settings->GetSecondExclude(0, nullptr, nullptr, &length),
      settings->AddExcludePrinter(nullptr, &id), settings->AddExcludePrinter(L"p", nullptr),
      settings->DeleteExcludePrinter(nullptr), entry->GetWatermarkInfo(1, &id, buffer, 1),
      entry->GetWatermarkInfo(0, nullptr, buffer, 1), entry->GetLastSetting(nullptr),
      entry->GetCustomSetting(nullptr, &setting), entry->CreateCustomSetting(nullptr),
      entry->CreateWatermark(nullptr), entry->DeleteWatermark(nullptr), last->SetName(nullptr),
      last->SetWatermarks(nullptr, 1));
  EXPECT_EQ(entry->GetWatermarkCount(), 1);
}

TEST(SettingsComponent, LeavesAFileThatIsNoSettingFileAlone) {
  const tests::TestMachine machine;
  const fs::path file = peers::FindSettingPlace().file;
  fs::create_directories(file.parent_path());
  Sql(file, "CREATE TABLE other(a); INSERT INTO other VALUES(1)");
  const std::string foreign = Bytes(file);
  for (const std::string& bytes : {foreign, std::string(), std::string("no database at all")}) {
    std::ofstream(file, std::ios::binary) << bytes;
    const auto settings = Open();
    Sigil::PrinterSettings* entry = nullptr;
    GUID id{};
    EXPECT_LT(settings->GetPrinterSettings(L"*", &entry), 0);
    EXPECT_LT(settings->GetPrinterSettingCount(), 0);
    EXPECT_LT(settings->GetExcludePrinterCount(), 0);
    EXPECT_LT(settings->AddExcludePrinter(L"p", &id), 0);
    EXPECT_LT(settings->DeletePrinterSetting(kFile.c_str(), L"p"), 0);
    EXPECT_EQ(settings->SetUseContentLog(1) | settings->Commit(), 0);
    EXPECT_LT(settings->Save(0), 0);
    EXPECT_THROW(peers::ReadSettingFile(file), std::runtime_error);
    EXPECT_EQ(Bytes(file), bytes);

    fs::remove(file);
    EXPECT_EQ(settings->Save(0), 0) << "the change was kept for another try";
    EXPECT_EQ(Show(), "content log\n");
    fs::remove_all(file.parent_path());
    fs::create_directories(file.parent_path());
  }
}

TEST(SettingsComponent, LocksOutOthersButNotReaders) {
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

  const auto holder = Open();
  ASSERT_EQ(holder->Lock(), 0);
  std::string order;
  std::promise<void> hasRead;
  std::thread other([&] {
    const auto settings = Open();
    EXPECT_EQ(settings->GetPrinterSettingCount(), 0) << "reading goes on";
    hasRead.set_value();
    const auto entry = Entry(*settings, L"p");
    const std::int32_t saved = Keep(*entry);
    order += "other " + std::to_string(saved);
  });
  hasRead.get_future().wait();
  EXPECT_EQ(Keep(*Entry(*holder, L"q")), 0);
  order += "holder, ";
  EXPECT_EQ(holder->UnLock(), 0);
  other.join();
  EXPECT_EQ(order, "holder, other 0");
}

TEST(SettingsComponent, SurvivesTheDeathOfItsProcess) {
  const tests::TestMachine machine;
  constexpr std::int32_t kMarks = 200;
  const auto fill = [](Sigil::PrinterSettings& entry, int round) {
    GUID id{};
    wchar_t name[8];
    while (entry.GetWatermarkInfo(0, &id, name, 7) == 0) entry.DeleteWatermark(&id);
    for (int i = 0; i < kMarks; ++i) Add(entry, std::to_wstring(round).c_str());
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
    const auto entry = peers::ReadSettingFile(peers::FindSettingPlace().file).entries.at(0);
    std::set<std::string> names;
    for (const auto& mark : entry.watermarks) names.insert(mark.name);
    EXPECT_EQ(entry.watermarks.size(), std::size_t{kMarks});
    EXPECT_EQ(names.size(), 1u) << "a record half saved";
  }
}

TEST(SettingsComponent, ObjectsMayOutliveTheirMakers) {
  const tests::TestMachine machine;
  auto entry = Entry(*Open(), L"p");
  Sigil::Watermark* made = nullptr;
  entry->CreateWatermark(&made);
  const Held<Sigil::Watermark> mark(made);
  EXPECT_EQ(mark->SetName(L"late") | Keep(*entry), 0);
  entry.reset();
  EXPECT_EQ(mark->SetName(L"lost") | static_cast<int>(mark->AddRef() - 2), 0);
  EXPECT_EQ(mark->Release(), 1u);
  EXPECT_EQ(Show(), "entry p\n   off:\n  mark late\n");
  const fs::directory_iterator files(peers::FindSettingPlace().file.parent_path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "the file, the lock and no remains";
}

TEST(SettingsComponent, IsMadeThroughItsEntryPoint) {
  const tests::TestMachine machine;
  const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path() / SIGIL_BUILD_FOLDER;
  void* module = dlopen((folder / "SigilUtil_x86.dll").c_str(), RTLD_NOW);
  ASSERT_NE(module, nullptr) << dlerror();
  for (const char* name : {"SigilMergeUserStoreWatermarks", "SigilGetVersionDate"})
    EXPECT_NE(dlsym(module, name), nullptr) << name;
  const auto create =
      reinterpret_cast<Sigil::CreateInstanceFunction>(dlsym(module, Sigil::kCreateInstanceName));

  void* out = nullptr;
  EXPECT_NE(create(&Sigil::kSettingsFirstIdentity, &Sigil::kStringSecondIdentity, &out), 0);
  EXPECT_NE(create(nullptr, nullptr, nullptr), 0);
  ASSERT_EQ(create(&Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity, &out), 0);
  Held<Sigil::Settings> settings(static_cast<Sigil::Settings*>(out));
  EXPECT_EQ(Keep(*Entry(*settings, L"p")), 0);
  EXPECT_EQ(Show(), "entry p\n   off:\n");
  settings.reset();

  ASSERT_EQ(create(&Sigil::kStringFirstIdentity, &Sigil::kStringSecondIdentity, &out), 0);
  Held<Sigil::String> text(static_cast<Sigil::String*>(out));
  EXPECT_EQ(text->SetKind(7) | text->SetText(L"名前"), 0);
  EXPECT_EQ(text->GetKind(), 7);
  EXPECT_LT(text->SetText(nullptr), 0);
  EXPECT_EQ(text->SetText(text->GetText() + 1), 0) << "a text of its own";
  EXPECT_EQ(std::wstring(text->GetText()) + text->GetDisplayText(), L"前前");
  text.reset();
  dlclose(module);
}

TEST(Guid, IsRandomAndReadsAsItIsWritten) {
  std::set<std::string> texts;
  for (int i = 0; i < 1000; ++i) {
    const std::string text = peers::NewGuid();
    EXPECT_EQ(text[14], '4');
    EXPECT_NE(std::string("89ab").find(text[19]), std::string::npos);
    EXPECT_EQ(peers::GuidText(peers::ParseGuid(text).value()), text);
    texts.insert(text);
  }
  EXPECT_EQ(texts.size(), 1000u);
  EXPECT_EQ(peers::GuidText(Sigil::kStringFirstIdentity), "9195ce54-518b-48f8-87c8-ba2ffc92bc9e");
  for (const char* bad :
       {"", "9195ce54-518b-48f8-87c8-ba2ffc92bc9", "9195ce54x518b-48f8-87c8-ba2ffc92bc9e",
        "9195ce5g-518b-48f8-87c8-ba2ffc92bc9e"})
    EXPECT_FALSE(peers::ParseGuid(bad)) << bad;
}

}  // namespace
