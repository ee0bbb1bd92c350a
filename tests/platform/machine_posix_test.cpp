#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>

#include "platform/posix/ini_file.h"
#include "platform/posix/machine.h"
#include "platform/profile.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

TEST(HostPath, LiesBelowTheDriveInTheRoot) {
  const TestMachine machine;
  const fs::path root = platform::MachineRoot();
  for (const char* folder : {"C/Data/Inner", "C/data2", "C/Both", "C/both"})
    fs::create_directories(root / folder);
  const struct {
    std::wstring_view path;
    const char* below;
  } kCases[] = {
      {L"C:\\new\\file", "C/new/file"},
      {L"d:/new\\\\file\\", "D/new/file"},
      {L"C:", "C"},
      {L"\\new", "C/new"},
      {L"new.ini", "C/new.ini"},
      {L"C:\\DATA\\inner\\New", "C/Data/Inner/New"},
      {L"c:\\both", "C/both"},
      {L"c:\\BOTH", "C/Both"},
      {L"C:\\Data\\..\\.\\data2", "C/data2"},
      {L"C:\\..\\..\\etc\\passwd", "C/etc/passwd"},
      {L"..\\/..\\..", "C"},
      {std::wstring_view(L"C:\\..\0x", 7), "C"},
      {L"\\\\server\\..\\..\\share", "C/share"},
      {L"C:\\田中\\\xD842\xDFB7", "C/田中/𠮷"},
  };
  for (const auto& each : kCases)
    EXPECT_EQ(platform::HostPath(each.path), root / each.below) << platform::ToUtf8(each.path);
  EXPECT_EQ(platform::HostPath(L"/etc/../tmp/a\\b"), "/etc/../tmp/a\\b");
  EXPECT_EQ(platform::HostPath(L""), "");
}

TEST(MachineRoot, ComesFromTheEnvironment) {
  const TestMachine machine;
  const auto root = [](const char* sigil, const char* data, const char* home) {
    setenv("SIGIL_ROOT", sigil, 1);
    setenv("XDG_DATA_HOME", data, 1);
    setenv("HOME", home, 1);
    return platform::MachineRoot();
  };
  const std::string oldRoot = getenv("SIGIL_ROOT");
  const char* const home = getenv("HOME");
  const std::string oldHome = home == nullptr ? "/" : home;
  EXPECT_EQ(root("/a", "/b", "/c"), "/a");
  EXPECT_EQ(root("", "/b", "/c"), "/b/sigil/machine");
  EXPECT_EQ(root("", "", "/c"), "/c/.local/share/sigil/machine");
  EXPECT_TRUE(root("relative", "", "/c").is_absolute());
  unsetenv("XDG_DATA_HOME");
  setenv("HOME", oldHome.c_str(), 1);
  setenv("SIGIL_ROOT", oldRoot.c_str(), 1);
}

TEST(Machine, AFileThatCannotBeReadIsNotOneThatIsMissing) {
  const TestMachine machine;
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
      ASSERT_NE(section, nullptr) << testing::PrintToString(bytes);
      ASSERT_NE(section->Find(L"key"), nullptr) << testing::PrintToString(bytes);
      EXPECT_EQ(section->Find(L"key")->value, L"value");
    }
  }
}

// Wine tidies such lines, so the test that both homes share has none of them.
TEST(IniFile, AChangeLeavesOtherLinesByteByByte) {
  const std::string rest = "\n\n [Other] x\nKey = \x82 broken \r\x81";
  platform::IniFile file("a\n[User] \nA = 1" + rest, platform::IniFile::Encoding::kAnsi);
  file.Set(L"user", L"B", L"2");
  EXPECT_EQ(file.Bytes(), "a\n[User] \nA = 1\nB=2\r\n" + rest.substr(1));
  file.Set(L"User", L"a", L"3");
  file.DeleteKey(L"User", L"b");
  EXPECT_EQ(file.Bytes(), "a\n[User] \nA=3\r\n" + rest.substr(1));
}

TEST(IniFile, AWriteKeepsModeAndLink) {
  TestMachine machine;
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\Real.ini";
  constexpr wchar_t kLink[] = L"C:\\SigilTest\\Link.ini";
  machine.Write(kFile, "[User]\nA=1\n");
  const fs::path file = platform::HostPath(kFile);
  fs::permissions(file, fs::perms(0640));
  fs::create_symlink("Real.ini", platform::HostPath(kLink));
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"A", L"2", kLink));
  EXPECT_EQ(machine.Read(kFile), "[User]\nA=2\r\n");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
  EXPECT_TRUE(fs::is_symlink(platform::HostPath(kLink)));
  const fs::directory_iterator left(file.parent_path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 2);
}

TEST(IniFile, ProcessesThatWriteAtOnceKeepEachOthersKeys) {
  const TestMachine machine;
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\Some.ini";
  constexpr int kWriters = 3, kKeys = 20;
  for (int writer = 0; writer < kWriters; ++writer) {
    if (fork() != 0) continue;
    BOOL done = TRUE;
    for (int key = writer; key < kWriters * kKeys; key += kWriters) {
      const std::wstring number = std::to_wstring(key);
      done &= WritePrivateProfileStringW(L"User", number.c_str(), number.c_str(), kFile);
    }
    _exit(done ? 0 : 1);
  }
  for (int writer = 0, status = 0; writer < kWriters; ++writer) {
    wait(&status);
    EXPECT_EQ(status, 0);
  }
  for (UINT key = 0; key < kWriters * kKeys; ++key)
    EXPECT_EQ(GetPrivateProfileIntW(L"User", std::to_wstring(key).c_str(), -1, kFile), key);
}

}  // namespace
}  // namespace tests
