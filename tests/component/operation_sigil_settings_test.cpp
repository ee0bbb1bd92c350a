// What the passes of tests/management do not reach of the component's handle. The update pass asks
// for the setting folder and clears what is set for single printers and drivers; a document that it
// refuses afterwards keeps the rest of it short.

#include "component/operation_sigil_settings.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "boundary/exports.h"
#include "component/setting_file_path.h"
#include "component/sigil_string.h"
#include "platform/utf.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/transcript.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

class Component : public testing::Test {
 protected:
  void ExpectUpdate(const char* section, const Twists& twists, const std::string& value,
                    std::initializer_list<std::string_view> parts) {
    SCOPED_TRACE(section);
    if (!Apply(twists)) return;
    SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"", 0);
    ExpectLinesWith(parts, m_told(section, {value}));
  }

  void ExpectClearing(const char* section, const Twists& twists, const std::string& path) {
    RecorderSetState(L"printer settings", L"甲\n乙");
    RecorderSetState(L"driver settings", L"丙");
    ExpectUpdate(section, twists, path,
                 {"AllDeletePrinterSetting", "DeletePrinterSetting", "DeleteDriverSetting"});
  }

  const Transcript m_told{{"component/transcripts/component"}};
};

constexpr char kRelative[] = R"(KBR-LTD\HarborLedge!\HarborLedge!.cfg)";

TEST_F(Component, AFailureWhileClearingCostsOneEntry) {
  const std::string path = SettingFile();
  const std::string local = R"(C:\Users\tanaka\AppData\Local\)" + std::string(kRelative);
  const struct {
    const char* section;
    Twists twists;
    std::string path;
  } rows[] = {{"all", {}, path},
              {"no name of a printer", Gives(L"Settings::GetPrinterSettingName", 1, -1), path},
              {"no name of a driver", Gives(L"Settings::GetDriverSettingName", 1, -1), path},
              {"all", Gives(L"Settings::GetPrinterSettingName", 0, 1), path},
              {"deletions refused",
               Gives(L"Settings::DeletePrinterSetting", 1, -1) +
                   Gives(L"Settings::DeletePrinterSetting", 2, 1) +
                   Gives(L"Settings::DeleteDriverSetting", 1, -1),
               path},
              {"thrown", Gives(L"SigilCreateInstance(String)", 0, -1), path},
              {"thrown", Gives(L"SigilCreateInstance(String)", 2, -1), path},
              {"all", Gives(L"SigilCreateInstance(String)", 0, 1), path},
              {"component that throws", Throws(L"Settings::DeletePrinterSetting", 2), path},
              // Three names are listed by a passing object each, then comes the copy of each.
              {"thrown", Throws(L"String::Release", 1), path},
              {"name that is not given back", Throws(L"String::Release", 5), path},
              {"all", Fault("SHGetKnownFolderPath"), local},
              {"all", Fault("SHGetKnownFolderPath") + Fault("SHGetSpecialFolderPathW"), kRelative}};
  for (const auto& row : rows) {
    TestMachine machine;
    ExpectClearing(row.section, row.twists, row.path);
  }
}

TEST_F(Component, APathTooLongDeletesNothing) {
  if (!platform::kHasFaults) GTEST_SKIP() << "the user's folder is the machine's own";
  const std::string begin = R"(C:\Users\)", end = R"(\AppData\LocalLow\)" + std::string(kRelative);
  for (const std::size_t length : {259U, 260U}) {
    TestMachine machine;
    const std::string user(length - begin.size() - end.size(), 'u');
    std::ofstream(std::string(getenv("SIGIL_ROOT")) + "/machine.ini")
        << "[Machine]\nUser=" << user << "\n";
    ExpectClearing(length == 259 ? "all" : "path too long", {}, begin + user + end);
  }
}

TEST_F(Component, TheSettingFilesPathIsCutWhereItDoesNotFit) {
  TestMachine machine;
  const std::wstring path = platform::FromUtf8(SettingFile());
  const auto needed = static_cast<std::uint32_t>(path.size() + 1);
  std::uint32_t length = 0;
  EXPECT_EQ(GetSettingFilePath(nullptr, &length), Sigil::kSuccess);
  EXPECT_EQ(length, needed);
  for (const std::uint32_t capacity : {needed + 100, needed, needed - 1, 2U, 1U, 0U}) {
    std::wstring target(capacity + 1, L'?');
    length = capacity;
    EXPECT_EQ(GetSettingFilePath(target.data(), &length),
              capacity >= needed ? Sigil::kSuccess : Sigil::kTargetTooSmall);
    EXPECT_EQ(length, needed);
    const std::wstring cut = capacity == 0 ? L"?" : path.substr(0, capacity - 1);
    EXPECT_STREQ(target.c_str(), cut.c_str());
    EXPECT_EQ(target[capacity], L'?') << "the capacity is kept";
  }
}

TEST_F(Component, OnlyTheSecondCallForTheFolderDecidesAndNothingIsCut) {
  const std::wstring fits = std::wstring(kSettingFolder) + std::wstring(255 - 12, L'\\');
  const struct {
    const char* section;
    std::wstring folder;
    Twists twists;
  } rows[] = {
      {"folder got without length", kSettingFolder, Gives(L"Settings::GetSettingFileDir", 1, -1)},
      {"no folder", kSettingFolder, Gives(L"Settings::GetSettingFileDir", 2, -1)},
      {"neither", kSettingFolder, Gives(L"Settings::GetSettingFileDir", 0, -1)},
      {"folder got", fits, {}},
      {"folder got", fits, Holds(L"told length", L"0")},
      {"folder got", fits, Holds(L"told length", L"255")},
      {"folder got", fits, Holds(L"told length", L"5000")},
      {"no folder", fits + L"\\", Holds(L"told length", L"256")},
      {"no folder", fits + L"\\", {}},
      {"no folder", std::wstring(5000, L'x'), {}}};
  for (const auto& row : rows) {
    TestMachine machine;
    RecorderSetState(L"setting folder", row.folder.c_str());
    ExpectUpdate(row.section, row.twists, platform::ToUtf8(row.folder), {"GetSettingFileDirPath"});
  }
}

TEST_F(Component, AStringIsAnObjectOfItAndSoIsEachCopy) {
  TestMachine machine;
  EXPECT_THROW(Sigil::CSigilString(L"甲"), Sigil::SigilResult) << "nobody has loaded it";
  {
    const OperationSigilSettings handle;
    const Sigil::CSigilString text(L"甲");
    Sigil::CSigilString copy(text);
    copy.Release();
  }
  ExpectRecord(m_told("string and copy"), Hide::kNothing);
}

}  // namespace
}  // namespace tests
