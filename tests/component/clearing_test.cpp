#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <functional>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

// The update pass clears what was set for single printers and drivers; a document that it refuses
// afterwards keeps the rest of the pass short.
void Clear() {
  SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, L"", 0);
}

const std::string kEnd = R"(
1 153400270 OperationSigilSettings::AllDeletePrinterSetting "登録済みプリンタ個別設定情報オール削除処理完了"
)";

const std::string kThrown = R"(
5 153400260 OperationSigilSettings::AllDeletePrinterSetting "登録済みプリンタ個別設定情報オール削除処理に異常が発生しました。"
)" + kEnd;

/// $1: the path.
const std::string kFirst = R"(
Settings::DeletePrinterSetting("$1", "甲")
1 153400220 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定を削除しました[<甲>]"
)";
const std::string kSecond = R"(
Settings::DeletePrinterSetting("$1", "乙")
1 153400220 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定を削除しました[<乙>]"
)";
const std::string kDriver = R"(
Settings::DeleteDriverSetting("$1", "丙")
1 153400240 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからドライバ個別設定を削除しました[<丙>]"
)";
const std::string kAll = kFirst + kSecond + kDriver + kEnd;

const char kRelative[] = R"(KBR-LTD\HarborLedge!\HarborLedge!.cfg)";

/// A user whose name makes the setting file's path `length` long.
void SetUserForPath(std::size_t length) {
  const std::string others = R"(C:\Users\\AppData\LocalLow\)" + std::string(kRelative);
  std::ofstream(std::string(getenv("SIGIL_ROOT")) + "/machine.ini")
      << "[Machine]\nUser=" << std::string(length - others.size(), 'u') << "\n";
}

TEST(Clearing, EachFailureCostsOneEntry) {
  const std::string path = SettingFile();
  const std::string local = R"(C:\Users\tanaka\AppData\Local\)" + std::string(kRelative);
  const std::string longestPath = R"(C:\Users\)" +
                                  std::string(259 - 27 - std::string(kRelative).size(), 'u') +
                                  R"(\AppData\LocalLow\)" + kRelative;
  const struct {
    const char* name;
    bool needsFaults;
    std::function<void()> script;
    std::string record, path;
  } cases[] = {
      {"all well", false, [] {}, kAll, path},
      {"a printer's name refused", false,
       [] { RecorderScript(L"Settings::GetPrinterSettingName", 1, -1); }, kSecond + kDriver + kEnd,
       path},
      {"a driver's name refused", false,
       [] { RecorderScript(L"Settings::GetDriverSettingName", 1, -1); }, kFirst + kSecond + kEnd,
       path},
      {"names given with a positive result", false,
       [] { RecorderScript(L"Settings::GetPrinterSettingName", 0, 1); }, kAll, path},
      {"deletions refused", false,
       [] {
         RecorderScript(L"Settings::DeletePrinterSetting", 1, -1);
         RecorderScript(L"Settings::DeletePrinterSetting", 2, 1);
         RecorderScript(L"Settings::DeleteDriverSetting", 1, -1);
       },
       R"(
Settings::DeletePrinterSetting("$1", "甲")
4 153400210 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定の削除に失敗しました[<甲>]"
)" + kSecond +
           R"(
Settings::DeleteDriverSetting("$1", "丙")
4 153400230 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからドライバ個別設定の削除に失敗しました[<丙>]"
)" + kEnd,
       path},
      {"no string object", true, [] { RecorderScript(L"SigilCreateInstance(String)", 0, -1); },
       kThrown, path},
      {"no string object after the first", true,
       [] { RecorderScript(L"SigilCreateInstance(String)", 2, 1); }, kThrown, path},
      {"a component that throws", true,
       [] { RecorderScriptThrow(L"Settings::DeletePrinterSetting", 2); },
       kFirst + "Settings::DeletePrinterSetting(\"$1\", \"乙\")\n" + kThrown, path},
      {"no folder of low integrity", true,
       [] { platform::SetFault("SHGetKnownFolderPath", 0, ERROR_ACCESS_DENIED); }, kAll, local},
      {"no folder at all", true,
       [] {
         platform::SetFault("SHGetKnownFolderPath", 0, ERROR_ACCESS_DENIED);
         platform::SetFault("SHGetSpecialFolderPathW", 0, ERROR_ACCESS_DENIED);
       },
       kAll, kRelative},
      {"a path that just fits", true, [] { SetUserForPath(259); }, kAll, longestPath},
      {"a path too long", true, [] { SetUserForPath(260); }, R"(
4 153400250 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルパスの取得に失敗しました。"
)" + kEnd,
       path},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    if (test.needsFaults && !platform::kHasFaults) continue;
    TestMachine machine;
    RecorderSetState(L"printer settings", L"甲\n乙");
    RecorderSetState(L"driver settings", L"丙");
    test.script();
    Clear();
    ExpectLinesWith({"AllDeletePrinterSetting", "DeletePrinterSetting", "DeleteDriverSetting"},
                    Fill(test.record, {test.path}));
  }
}

}  // namespace
}  // namespace tests
