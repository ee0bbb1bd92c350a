#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "platform/faults.h"
#include "platform/netapi.h"
#include "platform/posix/machine.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

std::string Text(const wchar_t* text) {
  return text == nullptr ? "(null)" : platform::ToUtf8(text);
}

/// The full name at both levels, or the result.
std::string FullName(LPCWSTR server, LPCWSTR user) {
  std::string names;
  for (const DWORD level : {10U, 11U}) {
    BYTE* record = nullptr;
    const NET_API_STATUS result = NetUserGetInfo(server, user, level, &record);
    if (result != NERR_Success)
      names += std::to_string(result);
    else if (level == 10)
      names += Text(reinterpret_cast<USER_INFO_10*>(record)->usri10_full_name) + ",";
    else
      names += Text(reinterpret_cast<USER_INFO_11*>(record)->usri11_full_name);
    EXPECT_EQ(record == nullptr, result != NERR_Success);
    NetApiBufferFree(record);
  }
  return names;
}

/// What a machine of this description answers, in one text.
std::string Answers(const std::string& description) {
  std::ofstream(platform::MachineRoot() / "machine.ini", std::ios::binary) << description;
  wchar_t user[256];
  DWORD size = 256;
  EXPECT_TRUE(GetUserNameW(user, &size));
  EXPECT_EQ(size, std::wcslen(user) + 1);
  std::string answers = Text(user);

  BYTE* workstation = nullptr;
  EXPECT_EQ(NetWkstaGetInfo(nullptr, 100, &workstation), NERR_Success);
  const auto* info = reinterpret_cast<WKSTA_INFO_100*>(workstation);
  EXPECT_NE(*info->wki100_computername, L'\0');
  answers += " " + Text(info->wki100_langroup);
  NetApiBufferFree(workstation);

  wchar_t* name = nullptr;
  NETSETUP_JOIN_STATUS status = NetSetupUnknownStatus;
  EXPECT_EQ(NetGetJoinInformation(nullptr, &name, &status), NERR_Success);
  answers += " " + Text(name) + ":" + std::to_string(status);
  BYTE* controller = nullptr;
  const NET_API_STATUS result = NetGetDCName(nullptr, name, &controller);
  answers += " " + (result == NERR_Success ? Text(reinterpret_cast<wchar_t*>(controller))
                                           : std::to_string(result));
  NetApiBufferFree(name);
  NetApiBufferFree(controller);
  return answers + " here=" + FullName(nullptr, user) + " there=" + FullName(L"\\\\DC01", user);
}

TEST(NetApi, AnswersAsTheMachineIs) {
  const TestMachine machine;
  const struct {
    const char* description;
    const char* expected;
  } kCases[] = {
      {"[Machine]\nUser=tanaka\n[Accounts]\ntanaka=田中 太郎\n",
       "tanaka WORKGROUP WORKGROUP:2 2453 here=田中 太郎,田中 太郎 there=5353"},
      {"[machine]\nuser=tanaka\ndomain=HARBOR\njoined=1\n[ACCOUNTS]\nTanaka=\n",
       "tanaka HARBOR HARBOR:3 2453 here=, there=5353"},
      {"[Machine]\nUser=tanaka\nDomain=HARBOR\nJoined=1\nController=\\\\DC01\n"
       "[Accounts]\ntanaka\n[Accounts \\\\DC01]\ntanaka=Taro Tanaka\n",
       "tanaka HARBOR HARBOR:3 \\\\DC01 here=(null),(null) there=Taro Tanaka,Taro Tanaka"},
      {"[Machine]\nUser=tanaka\nDomain=HARBOR\nJoined=1\nController=dc01\n[Accounts "
       "DC01]\ntanaka\n",
       "tanaka HARBOR HARBOR:3 \\\\dc01 here=22212221 there=(null),(null)"},
      {"[Machine]\nUser=tanaka\nDomain=HARBOR\nJoined=1\nController=\\\\DC01\n",
       "tanaka HARBOR HARBOR:3 \\\\DC01 here=22212221 there=22212221"},
      {"[Machine]\nUser=tanaka\nController=\\\\DC01\n",
       "tanaka WORKGROUP WORKGROUP:2 2453 here=22212221 there=22212221"},
  };
  for (const auto& each : kCases) EXPECT_EQ(Answers(each.description), each.expected);
}

TEST(NetApi, TheSystemsUsersAreAccountsOfTheMachine) {
  const TestMachine machine;
  const passwd* entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const std::string comment = entry->pw_gecos;
  const std::string name = comment.substr(0, comment.find(','));
  EXPECT_EQ(Answers(""), std::string(entry->pw_name) + " WORKGROUP WORKGROUP:2 2453 here=" + name +
                             "," + name + " there=5353");
}

TEST(NetApi, FailuresAreTheResult) {
  const TestMachine machine;
  wchar_t other[] = L"\\\\OTHER";
  BYTE* buffer = nullptr;
  wchar_t* name = nullptr;
  NETSETUP_JOIN_STATUS status;
  EXPECT_EQ(NetWkstaGetInfo(other, 100, &buffer), ERROR_BAD_NETPATH);
  EXPECT_EQ(NetWkstaGetInfo(nullptr, 7, &buffer), ERROR_INVALID_LEVEL);
  EXPECT_EQ(NetWkstaGetInfo(nullptr, 100, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(NetGetJoinInformation(other, &name, &status), ERROR_BAD_NETPATH);
  EXPECT_EQ(NetGetDCName(nullptr, L"ELSEWHERE", &buffer), NERR_DCNotFound);
  EXPECT_EQ(NetUserGetInfo(nullptr, L"tanaka", 2, &buffer), ERROR_INVALID_LEVEL);
  EXPECT_EQ(NetUserGetInfo(nullptr, nullptr, 10, &buffer), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(NetApiBufferFree(nullptr), NERR_Success);
  for (const char* operation :
       {"NetWkstaGetInfo", "NetGetJoinInformation", "NetGetDCName", "NetUserGetInfo"})
    platform::SetFault(operation, 0, 71);
  EXPECT_EQ(NetWkstaGetInfo(nullptr, 100, &buffer), 71U);
  EXPECT_EQ(NetGetJoinInformation(nullptr, &name, &status), 71U);
  EXPECT_EQ(NetGetDCName(nullptr, nullptr, &buffer), 71U);
  EXPECT_EQ(NetUserGetInfo(nullptr, L"tanaka", 10, &buffer), 71U);
  EXPECT_EQ(buffer, nullptr);
}

TEST(NetApi, AUserNameNeedsItsRoom) {
  const TestMachine machine;  // its user is "tanaka"
  wchar_t name[8] = L"#######";
  for (DWORD capacity : {0U, 6U, 7U}) {
    DWORD size = capacity;
    EXPECT_EQ(GetUserNameW(capacity == 0 ? nullptr : name, &size), capacity == 7);
    EXPECT_EQ(size, 7U);
    if (capacity != 7) {
      EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
      EXPECT_STREQ(name, L"#######");
    }
  }
  EXPECT_STREQ(name, L"tanaka");
}

}  // namespace
}  // namespace tests
