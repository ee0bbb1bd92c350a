#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "platform/utf.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

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
  const auto check = [](const std::wstring& folder, const Twists& twists,
                        const std::string& record) {
    TestMachine machine;
    RecorderSetState(L"setting folder", folder.c_str());
    if (!Apply(twists)) return;
    SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"", 0);
    ExpectLinesWith({"GetSettingFileDirPath"}, Fill(record, {platform::ToUtf8(folder)}));
  };
  check(kSettingFolder, Gives(L"Settings::GetSettingFileDir", 1, -1), begin + lengthFailed + got);
  check(kSettingFolder, Gives(L"Settings::GetSettingFileDir", 2, -1), begin + failed);
  check(kSettingFolder, Gives(L"Settings::GetSettingFileDir", 0, -1),
        begin + lengthFailed + failed);
  check(fits, Twists(), begin + got);
  check(fits + L"\\", Twists(), begin + failed);
  check(std::wstring(5000, L'x'), Twists(), begin + failed);
}

}  // namespace
}  // namespace tests
