// What the machine's folder and its machine.ini answer: paths, folders, printers, accounts.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "platform/faults.h"
#include "platform/netapi.h"
#include "platform/posix/ini_file.h"
#include "platform/posix/machine.h"
#include "platform/profile.h"
#include "platform/shell.h"
#include "platform/spooler.h"
#include "platform/utf.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

class Machine : public testing::Test {
 protected:
  static void Describe(const std::string& description) {
    std::ofstream(platform::MachineRoot() / "machine.ini") << description;
  }

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
  const auto root = [](const char* sigil, const char* data) {
    setenv("SIGIL_ROOT", sigil, 1);
    setenv("XDG_DATA_HOME", data, 1);
    return platform::MachineRoot();
  };
  EXPECT_EQ(root("/a", "/b"), "/a");
  EXPECT_EQ(root("", "/b"), "/b/sigil/machine");
  EXPECT_TRUE(root("relative", "").is_absolute());
  EXPECT_TRUE(root("", "").string().ends_with("/.local/share/sigil/machine"));
  unsetenv("XDG_DATA_HOME");
  setenv("SIGIL_ROOT", oldRoot.c_str(), 1);
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
      const auto* section = again.Find(L"New");
      const auto* line = section == nullptr ? nullptr : section->Find(L"key");
      ASSERT_NE(line, nullptr) << testing::PrintToString(bytes);
      EXPECT_EQ(line->value, L"value");
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

/// The full name by a record of this level, or the result.
template <typename Record>
std::string FullName(LPCWSTR server, DWORD level, LPWSTR Record::*name) {
  BYTE* record = nullptr;
  const NET_API_STATUS result = NetUserGetInfo(server, L"tanaka", level, &record);
  const std::string text = result == NERR_Success ? Text(reinterpret_cast<Record*>(record)->*name)
                                                  : std::to_string(result);
  NetApiBufferFree(record);
  return text;
}

/// Domain, join, controller, and the user's full names here and there.
std::string NetAnswers() {
  wchar_t* domain = nullptr;
  NETSETUP_JOIN_STATUS status = NetSetupUnknownStatus;
  EXPECT_EQ(NetGetJoinInformation(nullptr, &domain, &status), NERR_Success);
  BYTE* controller = nullptr;
  const NET_API_STATUS result = NetGetDCName(nullptr, domain, &controller);
  const std::string answers = Text(domain) + ":" + std::to_string(status) + " " +
                              (result == NERR_Success ? Text(reinterpret_cast<wchar_t*>(controller))
                                                      : std::to_string(result));
  NetApiBufferFree(domain);
  NetApiBufferFree(controller);
  return answers + " " + FullName(nullptr, 10, &USER_INFO_10::usri10_full_name) + " " +
         FullName(L"\\\\DC01", 11, &USER_INFO_11::usri11_full_name);
}

TEST_F(Machine, HasTheAccountsOfItsDescription) {
  const std::string joined = "[machine]\nuser=tanaka\ndomain=HARBOR\njoined=1\n";
  using Row = std::pair<std::string, const char*>;
  for (const auto& [description, answers] :
       {Row("[Machine]\nController=\\\\DC01\n[Accounts]\ntanaka=田中 太郎\n",
            "WORKGROUP:2 2453 田中 太郎 2221"),
        Row(joined + "[ACCOUNTS]\nTanaka=\n", "HARBOR:3 2453  53"),
        Row(joined + "Controller=\\\\DC01\n[Accounts]\ntanaka\n[Accounts \\\\DC01]\ntanaka=Taro\n",
            "HARBOR:3 \\\\DC01 (null) Taro"),
        Row(joined + "Controller=dc01\n[Accounts DC01]\ntanaka\n",
            "HARBOR:3 \\\\dc01 2221 (null)")}) {
    Describe(description);
    EXPECT_EQ(NetAnswers(), answers);
  }
}

TEST_F(Machine, TellsWhyItHasNoAnswer) {
  BYTE* buffer = nullptr;
  EXPECT_EQ(NetWkstaGetInfo(nullptr, 7, &buffer), ERROR_INVALID_LEVEL);
  platform::SetFault("NetUserGetInfo", 0, 71);
  EXPECT_EQ(NetUserGetInfo(nullptr, L"tanaka", 10, &buffer), 71U);
  EXPECT_EQ(buffer, nullptr);
  wchar_t name[8] = L"#######";
  DWORD size = 6;
  EXPECT_EQ(ErrorOf(GetUserNameW(name, &size)), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(size, 7U);
  EXPECT_STREQ(name, L"#######");
  EXPECT_TRUE(GetUserNameW(name, &size));
  EXPECT_STREQ(name, L"tanaka");
}

TEST_F(Machine, MakesTheFoldersOfWindowsWhenAsked) {
  const std::wstring local = L"C:\\Users\\tanaka\\AppData\\Local";
  wchar_t path[MAX_PATH] = L"#";
  for (const BOOL create : {FALSE, TRUE}) {
    EXPECT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_LOCAL_APPDATA, create));
    EXPECT_EQ(path, local);
    EXPECT_EQ(fs::exists(platform::HostPath(local)), create != FALSE);
  }
  EXPECT_FALSE(SHGetSpecialFolderPathW(nullptr, path, 0x7F, TRUE));
}

/// What the records tell, one line for each. Every text must lie in the block.
std::string Listed(const std::vector<BYTE>& block, DWORD count) {
  const auto* record = reinterpret_cast<const PRINTER_INFO_2W*>(block.data());
  std::string lines;
  for (; count != 0; --count, ++record) {
    for (const wchar_t* each :
         {record->pServerName, record->pPrinterName, record->pDriverName, record->pComment}) {
      lines += Text(each) + "|";
      const auto* begin = reinterpret_cast<const BYTE*>(each);
      EXPECT_TRUE(each == nullptr || (begin > block.data() && begin < &block.back()));
    }
    lines += std::to_string(record->Attributes) + "\n";
  }
  return lines;
}

TEST_F(Machine, ListsThePrintersOfTheKindsAskedFor) {
  m_machine.SetPrinters({{L"会議室プリンタ", kSuiteDriver, L"2F [監視対象プリンタ]"},
                         {L"Plain [A]", L"Other Driver", std::nullopt},
                         {L"\\\\SERVER\\Far", L"Other Driver", L""}});
  const std::string local =
      "(null)|会議室プリンタ|QuietMIMOSA Harbor Ledge Driver|2F [監視対象プリンタ]|64\n"
      "(null)|Plain [A]|Other Driver|(null)|64\n";
  const std::string connected = "\\\\SERVER|\\\\SERVER\\Far|Other Driver||16\n";
  using Row = std::pair<DWORD, std::string>;
  for (const auto& [flags, expected] :
       {Row(PRINTER_ENUM_LOCAL, local), Row(PRINTER_ENUM_CONNECTIONS, connected),
        Row(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, local + connected)}) {
    std::vector<BYTE> block;
    DWORD needed = 0, count = 9;
    const auto list = [&, kinds = flags](DWORD size, DWORD level = 2) {
      return ErrorOf(EnumPrintersW(kinds, nullptr, level, block.data(), size, &needed, &count));
    };
    EXPECT_EQ(list(0), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(list(needed), ERROR_INVALID_USER_BUFFER);
    block.resize(needed);
    EXPECT_EQ(list(needed - 1), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(list(needed), ERROR_SUCCESS);
    EXPECT_EQ(Listed(block, count), expected);
    EXPECT_EQ(list(needed, 4), ERROR_INVALID_LEVEL);
  }
}

}  // namespace
}  // namespace tests
