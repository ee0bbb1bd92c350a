#include <gtest/gtest.h>

#include <fstream>

#include "host/full_name_lookup.h"
#include "platform/posix/machine.h"
#include "platform/utf.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

namespace tests {
namespace {

const std::string kUser = R"(
2 153100700 SigilSettingManagement::GetUserFullName "取得したユーザ名：【tanaka】"
)";
const std::string kAsked = kUser + R"(
2 153100710 SigilSettingManagement::GetUserFullName "ドメインコントローラー：【\\DC01】"
)";
const std::string kFound = R"(
3 153100390 SigilSettingManagement::GetUserFullName "ユーザ名称取得成功【$1】"
)";
const std::string kFailed = R"(
4 $1 SigilSettingManagement::GetUserFullName "ユーザ名称取得失敗　エラーステータス[2221]"
)";
const std::string kEmpty = R"(
4 153100720 SigilSettingManagement::GetUserFullName "ユーザ名称取得失敗　処理結果=$1"
)";

constexpr char kAlone[] = "";
constexpr char kJoined[] = "Joined=1\nDomain=HARBOR\nController=\\\\DC01\n";
constexpr char kLocal[] = "[Accounts]\ntanaka=田中 太郎\n";

struct Found {
  bool result;
  const char* fullName;
  const char* controller;
};

TEST(FullNameLookup, AsksTheControllerFirstAndTheMachineAfterIt) {
  const auto check = [](const std::string& machineKeys, const std::string& accounts,
                        const Twists& twists, const Found& found, const std::string& record) {
    SCOPED_TRACE(machineKeys + accounts);
    TestMachine machine;
    std::ofstream(platform::MachineRoot() / "machine.ini")
        << "[Machine]\nUser=tanaka\n" + machineKeys + accounts;
    Apply(twists);
    CString fullName = L"before", controller = L"before";
    EXPECT_EQ(SigilSettingManagement::GetUserFullName(fullName, controller), found.result);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(fullName)), found.fullName);
    EXPECT_EQ(platform::ToUtf8(std::wstring_view(controller)), found.controller);
    ExpectRecord(record);
  };
  const std::string there = std::string(kLocal) + "[Accounts \\\\DC01]\n";
  const std::string found = Fill(kFound, {"田中 太郎"});
  check(kAlone, kLocal, Twists(), {true, "田中 太郎", ""}, kUser + found);
  check(kAlone, "[Accounts]\ntanaka=\n", Twists(), {true, "", ""}, kUser + Fill(kEmpty, {"1"}));
  check(kAlone, kLocal, Fault("NetUserGetInfo", 0, 2221), {false, "", ""},
        kUser + Fill(kFailed, {"153100350"}) + Fill(kEmpty, {"0"}));
  check(kJoined, there + "tanaka=本店 太郎\n", Twists(), {true, "本店 太郎", "\\\\DC01"},
        kAsked + Fill(kFound, {"本店 太郎"}));
  check(kJoined, there + "tanaka=\n", Twists(), {true, "", "\\\\DC01"},
        kAsked + Fill(kEmpty, {"1"}));
  check(kJoined, there + "tanaka\n", Twists(), {true, "田中 太郎", ""}, kAsked + found);
  check(kJoined, there + "tanaka\n", Fault("NetUserGetInfo", 1, 2221), {false, "", ""},
        kAsked + Fill(kFailed, {"153100360"}) + Fill(kEmpty, {"0"}));
  check(kJoined, there + "suzuki=鈴木\n", Twists(), {true, "田中 太郎", ""}, kAsked + found);
  check(kJoined, there, Fault("NetUserGetInfo", 0, 2221), {false, "", ""},
        kAsked + Fill(kFailed, {"153100370"}) + Fill(kEmpty, {"0"}));
  check("Joined=1\nDomain=HARBOR\n", kLocal, Twists(), {true, "田中 太郎", ""}, kUser + found);
  check("Joined=1\nDomain=HARBOR\n", kLocal, Fault("NetUserGetInfo", 0, 2221), {false, "", ""},
        kUser + Fill(kFailed, {"153100350"}) + Fill(kEmpty, {"0"}));
  check(kJoined, there + "tanaka=本店 太郎\n", Fault("NetGetJoinInformation"),
        {true, "田中 太郎", ""}, kUser + found);
}

}  // namespace
}  // namespace tests
