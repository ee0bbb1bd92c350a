// What the passes of tests/management do not reach of the component's handle. The update pass asks
// for the setting folder and clears what is set for single printers and drivers; a document that it
// refuses afterwards keeps the rest of it short.

#include "component/operation_sigil_settings.h"

#include <stdlib.h>

#include <fstream>

#include "boundary/exports.h"
#include "component/sigil_string.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

class Component : public testing::Test {
 protected:
  /// Runs the pass and compares those lines of its record that hold one of `parts`.
  void ExpectUpdate(const char* section, const std::string& value,
                    std::initializer_list<std::string_view> parts) const {
    EXPECT_EQ(SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"", 0), -101);
    ExpectLinesWith(parts, m_told(section, {value}));
  }

  void ExpectClearing(const char* section, const std::string& path) const {
    RecorderSetState(L"printer settings", L"甲\n乙");
    RecorderSetState(L"driver settings", L"丙");
    ExpectUpdate(section, path,
                 {"AllDeletePrinterSetting", "DeletePrinterSetting", "DeleteDriverSetting"});
  }

  const Transcript m_told{{"component/transcripts/component"}};
};

TEST_F(Component, AFailureWhileClearingCostsOneEntry) {
  for (const Transcript::Row& row : m_told.Rows()) {
    SCOPED_TRACE(row.section + ", when " + row.causes);
    TestMachine machine;
    if (Arrange(row.causes)) ExpectClearing(row.section.c_str(), SettingFile());
  }
}

TEST_F(Component, APathTooLongDeletesNothing) {
  if (!platform::kHasFaults) GTEST_SKIP() << "the user's folder is the machine's own";
  const std::string begin = R"(C:\Users\)";
  const std::string end = R"(\AppData\LocalLow\KBR-LTD\HarborLedge!\HarborLedge!.cfg)";
  const struct {
    std::size_t length;
    const char* section;
  } rows[] = {{259, "all"}, {260, "path too long"}, {4000, "all where no folder is known"}};
  for (const auto& [length, section] : rows) {
    TestMachine machine;
    std::string user(length - begin.size() - end.size(), '\\');
    for (std::size_t i = 0; i < user.size(); i += 2) user[i] = 'u';
    if (user.ends_with('\\')) user.back() = 'u';
    std::ofstream(std::string(getenv("SIGIL_ROOT")) + "/machine.ini")
        << "[Machine]\nUser=" << user << "\n";
    ExpectClearing(section, begin + user + end);
  }
}

TEST_F(Component, OnlyTheSecondCallForTheFolderDecidesAndNothingIsCut) {
  const std::wstring fits = std::wstring(kSettingFolder) + std::wstring(255 - 12, L'\\');
  const struct {
    const char* section;
    std::wstring folder;
    const char* causes;
  } rows[] = {{"folder got without length", kSettingFolder,
               "call 1 of Settings::GetSettingFileDir gives -1"},
              {"no folder", kSettingFolder, "call 2 of Settings::GetSettingFileDir gives -1"},
              {"neither", kSettingFolder, "each call of Settings::GetSettingFileDir gives -1"},
              {"folder got", fits, R"("told length" is 0)"},
              {"folder got", fits, R"("told length" is 255)"},
              {"folder got", fits, R"("told length" is 256)"},
              {"folder got", fits, R"("told length" is 5000)"},
              {"no folder", fits + L"\\", R"("told length" is 256)"},
              {"no folder", fits + L"\\", R"("told length" is 257)"},
              {"no folder", std::wstring(5000, L'x'), R"("told length" is 5001)"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.causes);
    TestMachine machine;
    RecorderSetState(L"setting folder", row.folder.c_str());
    Arrange(row.causes);
    ExpectUpdate(row.section, platform::ToUtf8(row.folder), {"GetSettingFileDirPath"});
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
