#include <gtest/gtest.h>

#include <functional>

#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

TEST(SettingFolder, OnlyTheSecondCallDecidesAndNothingIsCut) {
  const std::string begin = R"(
4 99999999 OperationSigilSettings::GetSettingFileDirPath "GetSettingFileDirPath 到着"
)";
  const std::string lengthFailed = R"(
4 153400303 OperationSigilSettings::GetSettingFileDirPath "設定ファイル格納ディレクトリパス取得失敗"
)";
  const std::string failed = R"(
4 153400302 OperationSigilSettings::GetSettingFileDirPath "設定ファイル格納ディレクトリパス取得失敗"
)";
  const std::string got = R"(
1 153400301 OperationSigilSettings::GetSettingFileDirPath "設定ファイル格納ディレクトリパス取得成功：【$1】"
)";
  const std::wstring fits = std::wstring(kSettingFolder) + std::wstring(255 - 12, L'\\');
  const struct {
    std::wstring folder;
    std::function<void()> script;
    std::string record;
  } cases[] = {
      {kSettingFolder, [] { RecorderScript(L"Settings::GetSettingFileDir", 1, -1); },
       begin + lengthFailed + got},
      {kSettingFolder, [] { RecorderScript(L"Settings::GetSettingFileDir", 2, -1); },
       begin + failed},
      {kSettingFolder, [] { RecorderScript(L"Settings::GetSettingFileDir", 0, -1); },
       begin + lengthFailed + failed},
      {fits, [] {}, begin + got},
      {fits + L"\\", [] {}, begin + failed},
      {std::wstring(5000, L'x'), [] {}, begin + failed},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    TestMachine machine;
    RecorderSetState(L"setting folder", test.folder.c_str());
    test.script();
    SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"", 0);
    ExpectLinesWith({"GetSettingFileDirPath"}, Fill(test.record, {platform::ToUtf8(test.folder)}));
  }
}

}  // namespace
}  // namespace tests
