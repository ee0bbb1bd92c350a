#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

#include "boundary/exports.h"
#include "platform/faults.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

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

void ClearAndExpect(const std::string& record, const std::string& path) {
  RecorderSetState(L"printer settings", L"甲\n乙");
  RecorderSetState(L"driver settings", L"丙");
  Clear();
  ExpectLinesWith({"AllDeletePrinterSetting", "DeletePrinterSetting", "DeleteDriverSetting"},
                  Fill(record, {path}));
}

TEST(Clearing, EachFailureCostsOneEntry) {
  const std::string path = SettingFile();
  const std::string local = R"(C:\Users\tanaka\AppData\Local\)" + std::string(kRelative);
  const auto check = [](const char* name, const Twists& twists, const std::string& record,
                        const std::string& path) {
    SCOPED_TRACE(name);
    TestMachine machine;
    if (Apply(twists)) ClearAndExpect(record, path);
  };
  check("all well", Twists(), kAll, path);
  check("a printer's name refused", Gives(L"Settings::GetPrinterSettingName", 1, -1),
        kSecond + kDriver + kEnd, path);
  check("a driver's name refused", Gives(L"Settings::GetDriverSettingName", 1, -1),
        kFirst + kSecond + kEnd, path);
  check("names given with a positive result", Gives(L"Settings::GetPrinterSettingName", 0, 1), kAll,
        path);
  check("deletions refused",
        Gives(L"Settings::DeletePrinterSetting", 1, -1) +
            Gives(L"Settings::DeletePrinterSetting", 2, 1) +
            Gives(L"Settings::DeleteDriverSetting", 1, -1),
        R"(
Settings::DeletePrinterSetting("$1", "甲")
4 153400210 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからプリンタ個別設定の削除に失敗しました[<甲>]"
)" + kSecond +
            R"(
Settings::DeleteDriverSetting("$1", "丙")
4 153400230 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルからドライバ個別設定の削除に失敗しました[<丙>]"
)" + kEnd,
        path);
  check("no string object", Gives(L"SigilCreateInstance(String)", 0, -1), kThrown, path);
  check("no string object after the first", Gives(L"SigilCreateInstance(String)", 2, -1), kThrown,
        path);
  check("strings with a positive result", Gives(L"SigilCreateInstance(String)", 0, 1), kAll, path);
  check("a component that throws", Throws(L"Settings::DeletePrinterSetting", 2),
        kFirst + "Settings::DeletePrinterSetting(\"$1\", \"乙\")\n" + kThrown, path);
  check("no folder of low integrity", Fault("SHGetKnownFolderPath"), kAll, local);
  check("no folder at all", Fault("SHGetKnownFolderPath") + Fault("SHGetSpecialFolderPathW"), kAll,
        kRelative);
}

TEST(Clearing, APathTooLongDeletesNothing) {
  if (!platform::kHasFaults) GTEST_SKIP() << "the user's folder is the machine's own";
  const std::string begin = R"(C:\Users\)", end = R"(\AppData\LocalLow\)" + std::string(kRelative);
  for (const std::size_t length : {259U, 260U}) {
    TestMachine machine;
    const std::string user(length - begin.size() - end.size(), 'u');
    std::ofstream(std::string(getenv("SIGIL_ROOT")) + "/machine.ini")
        << "[Machine]\nUser=" << user << "\n";
    ClearAndExpect(length == 259 ? kAll : R"(
4 153400250 OperationSigilSettings::AllDeletePrinterSetting "設定ファイルパスの取得に失敗しました。"
)" + kEnd,
                   begin + user + end);
  }
}

}  // namespace
}  // namespace tests
