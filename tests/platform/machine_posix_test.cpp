// What the machine's folder and its machine.ini answer: paths, folders, printers, accounts.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <random>

#include "platform/netapi.h"
#include "platform/posix/ini_file.h"
#include "platform/posix/machine.h"
#include "platform/profile.h"
#include "platform/spooler.h"
#include "platform/utf.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

class Machine : public testing::Test {
 protected:
  TestMachine m_machine;
};

TEST_F(Machine, PathsLieBelowTheDriveInTheRoot) {
  const fs::path root = platform::MachineRoot();
  for (const char* folder : {"C/Data/Inner", "C/data2", "C/Both", "C/both"})
    fs::create_directories(root / folder);
  using Row = std::pair<std::wstring_view, const char*>;
  for (const auto& [path, below] :
       {Row(L"C:\\new\\file", "C/new/file"), Row(L"d:/new\\\\file\\", "D/new/file"),
        Row(L"C:", "C"), Row(L"\\new", "C/new"), Row(L"new.ini", "C/new.ini"),
        Row(L"C:\\DATA\\inner\\New", "C/Data/Inner/New"), Row(L"c:\\both", "C/both"),
        Row(L"c:\\BOTH", "C/Both"), Row(L"C:\\Data\\..\\.\\data2", "C/data2"),
        Row(L"C:\\..\\..\\etc\\passwd", "C/etc/passwd"), Row(L"..\\/..\\..", "C"),
        Row({L"C:\\..\0x", 7}, "C"), Row(L"\\\\server\\..\\..\\share", "C/share"),
        Row(L"C:\\田中\\\xD842\xDFB7", "C/田中/𠮷")})
    EXPECT_EQ(platform::HostPath(path), root / below) << platform::ToUtf8(path);
  EXPECT_EQ(platform::HostPath(L"/etc/../tmp/a\\b"), "/etc/../tmp/a\\b");
  EXPECT_EQ(platform::HostPath(L""), "");
}

TEST_F(Machine, HasItsRootFromTheEnvironment) {
  const std::string oldRoot = getenv("SIGIL_ROOT");
  unsetenv("SIGIL_ROOT");
  EXPECT_TRUE(platform::MachineRoot().string().ends_with("/.local/share/sigil/machine"));
  setenv("XDG_DATA_HOME", "/b", 1);
  EXPECT_EQ(platform::MachineRoot(), "/b/sigil/machine");
  unsetenv("XDG_DATA_HOME");
  setenv("SIGIL_ROOT", oldRoot.c_str(), 1);
  EXPECT_EQ(platform::MachineRoot(), oldRoot);
  // A description that cannot be read is not one that is missing.
  const fs::path file = platform::MachineRoot() / "machine.ini";
  fs::remove(file);
  EXPECT_TRUE(platform::LoadMachine().printers.empty());
  fs::create_directory(file);
  EXPECT_THROW(platform::LoadMachine(), std::system_error);
}

TEST(IniFile, LeavesAnyBytesAsTheyAre) {
  using Encoding = platform::IniFile::Encoding;
  const std::string kAlphabet("[]=;\"' \r\n\0a\x81\xFF\xFE", 14);
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 40, '\0');
    for (char& byte : bytes) byte = kAlphabet[random() % kAlphabet.size()];
    if (round % 3 == 0) bytes.insert(0, "\xFF\xFE");
    for (const Encoding encoding : {Encoding::kAnsi, Encoding::kUtf8}) {
      platform::IniFile file(bytes, encoding);
      EXPECT_EQ(file.Bytes(), bytes);
      file.Set(L"New", L"Key", L"value");
      const platform::IniFile again(file.Bytes(), encoding);
      ASSERT_NE(again.Find(L"New"), nullptr) << testing::PrintToString(bytes);
      EXPECT_EQ(again.Find(L"New")->Find(L"key")->value, L"value");
    }
  }
}

// Wine tidies such lines, so the test that both homes share has none of them.
TEST_F(Machine, AChangeOfAProfileLeavesOtherLinesModeAndLink) {
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\Real.ini";
  constexpr wchar_t kLink[] = L"C:\\SigilTest\\Link.ini";
  const std::string rest = "\n [Other] x\nKey = \x82 broken \r\x81";
  m_machine.Write(kFile, "a\n[User] \nA = 1\n" + rest);
  const fs::path file = platform::HostPath(kFile);
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("Real.ini", platform::HostPath(kLink));
  EXPECT_TRUE(WritePrivateProfileStringW(L"user", L"B", L"2", kLink));
  EXPECT_EQ(m_machine.Read(kFile), "a\n[User] \nA = 1\nB=2\r\n" + rest);
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"b", nullptr, kLink));
  EXPECT_EQ(m_machine.Read(kFile), "a\n[User] \nA = 1\n" + rest);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
  EXPECT_TRUE(fs::is_symlink(platform::HostPath(kLink)));
  const fs::directory_iterator left(file.parent_path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

TEST_F(Machine, ProcessesThatWriteAtOnceKeepEachOthersKeys) {
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\Some.ini";
  constexpr int kWriters = 3, kKeys = 60;
  for (int writer = 0; writer < kWriters; ++writer) {
    if (fork() != 0) continue;
    BOOL done = TRUE;
    for (int key = writer; key < kKeys; key += kWriters) {
      const std::wstring number = std::to_wstring(key);
      done &= WritePrivateProfileStringW(L"User", number.c_str(), number.c_str(), kFile);
    }
    _exit(done ? 0 : 1);
  }
  for (int writer = 0, status = 0; writer < kWriters; ++writer) {
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  for (UINT key = 0; key < kKeys; ++key)
    EXPECT_EQ(GetPrivateProfileIntW(L"User", std::to_wstring(key).c_str(), -1, kFile), key);
}

std::string Text(const wchar_t* text) {
  return text == nullptr ? "(null)" : platform::ToUtf8(text);
}

/// The full name, or the result.
std::string FullName(LPCWSTR server) {
  BYTE* record = nullptr;
  const NET_API_STATUS result = NetUserGetInfo(server, L"tanaka", 10, &record);
  if (result != NERR_Success) return std::to_string(result);
  const std::string name = Text(reinterpret_cast<USER_INFO_10*>(record)->usri10_full_name);
  NetApiBufferFree(record);
  return name;
}

TEST_F(Machine, HasTheAccountsOfItsDescription) {
  const std::string joined = "[machine]\nuser=tanaka\ndomain=HARBOR\njoined=1\n";
  using Row = std::array<std::string, 4>;
  for (const auto& [description, domain, here, there] :
       {Row{"[Machine]\nController=\\\\DC01\n[Accounts]\ntanaka=田中 太郎\n", "WORKGROUP 2 2453",
            "田中 太郎", "2221"},
        Row{joined + "[ACCOUNTS]\nTanaka=\n", "HARBOR 3 2453", "", "53"},
        Row{joined + "Controller=\\\\DC01\n[Accounts]\ntanaka\n[Accounts \\\\DC01]\ntanaka=Taro\n",
            "HARBOR 3 0", "(null)", "Taro"},
        Row{joined + "Controller=dc01\n[Accounts DC01]\ntanaka\n", "HARBOR 3 0", "2221",
            "(null)"}}) {
    std::ofstream(platform::MachineRoot() / "machine.ini") << description;
    wchar_t* name = nullptr;
    NETSETUP_JOIN_STATUS status = NetSetupUnknownStatus;
    EXPECT_EQ(NetGetJoinInformation(nullptr, &name, &status), NERR_Success);
    BYTE* controller = nullptr;
    const NET_API_STATUS result = NetGetDCName(nullptr, name, &controller);
    EXPECT_EQ(Text(name) + " " + std::to_string(status) + " " + std::to_string(result), domain);
    EXPECT_EQ(FullName(nullptr), here);
    EXPECT_EQ(FullName(L"\\\\DC01"), there);
    NetApiBufferFree(name);
    NetApiBufferFree(controller);
  }
}

TEST_F(Machine, GivesWhatHasRoom) {
  wchar_t name[8] = L"#######";
  DWORD size = 6;
  EXPECT_EQ(ErrorOf(GetUserNameW(name, &size)), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(size, 7U);
  EXPECT_STREQ(name, L"#######");
  EXPECT_TRUE(GetUserNameW(name, &size));
  EXPECT_STREQ(name, L"tanaka");

  m_machine.SetPrinters({{L"会議室プリンタ", kSuiteDriver, std::nullopt},
                         {L"\\\\SERVER\\Far", L"Other Driver", L"far"}});
  DWORD needed = 0, count = 9;
  std::vector<BYTE> block;
  const auto list = [&](DWORD flags, DWORD capacity) {
    return ErrorOf(EnumPrintersW(flags, nullptr, 2, block.data(), capacity, &needed, &count));
  };
  constexpr DWORD kBoth = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
  EXPECT_EQ(list(kBoth, 0), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(count, 0U);
  block.resize(needed);
  EXPECT_EQ(list(kBoth, needed - 1), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(list(kBoth, needed), ERROR_SUCCESS);
  EXPECT_EQ(count, 2U);
  const auto* record = reinterpret_cast<const PRINTER_INFO_2W*>(block.data());
  EXPECT_EQ(Text(record[0].pPrinterName) + "|" + Text(record[0].pComment), "会議室プリンタ|(null)");
  EXPECT_EQ(Text(record[1].pServerName) + "|" + Text(record[1].pComment), "\\\\SERVER|far");
  EXPECT_EQ(list(PRINTER_ENUM_CONNECTIONS, needed), ERROR_SUCCESS);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(Text(record->pDriverName), "Other Driver");
}

}  // namespace
}  // namespace tests
