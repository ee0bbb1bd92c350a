// What the machine's folder and its machine.ini answer: paths, files, pipes.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "platform/file.h"
#include "platform/posix/machine/machine.h"
#include "platform/profile.h"
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
  EXPECT_EQ(platform::HostPath(L"/etc/../tmp/a\\b"), "/etc/../tmp/a/b");
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

// Wine tidies such lines, so the test that both homes share has none of them.
TEST_F(Machine, AChangeOfAProfileLeavesOtherLines) {
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\Real.ini";
  const std::string rest = "\n [Other] x\nKey = \x82 broken \r\x81";
  m_machine.Write(kFile, "a\n[User] \nA = 1\n" + rest);
  EXPECT_TRUE(WritePrivateProfileStringW(L"user", L"B", L"2", kFile));
  EXPECT_EQ(m_machine.Read(kFile), "a\n[User] \nA = 1\nB=2\r\n" + rest);
  const fs::directory_iterator left(platform::HostPath(kFile).parent_path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 1);
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

HANDLE Open(LPCWSTR path, DWORD access = GENERIC_WRITE) {
  return CreateFileW(path, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST_F(Machine, TellsWhyAPipeCannotBeUsed) {
  constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\TestPipe";
  const fs::path path = platform::MachineRoot() / "pipe" / "testpipe";
  fs::create_directories(path.parent_path());
  sockaddr_un address{AF_UNIX, {}};
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int server = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  EXPECT_EQ(bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(listen(server, 0), 0);

  std::vector<HANDLE> clients;
  HANDLE next;
  while (clients.size() < 20 && (next = Open(kPipe)) != INVALID_HANDLE_VALUE)
    clients.push_back(next);
  EXPECT_EQ(ErrorOf(next), ERROR_PIPE_BUSY);
  ASSERT_FALSE(clients.empty());
  close(accept(server, nullptr, nullptr));
  DWORD written = 99;
  EXPECT_EQ(ErrorOf(WriteFile(clients[0], "x", 1, &written, nullptr)), ERROR_NO_DATA);
  EXPECT_EQ(written, 0U);
  for (const HANDLE client : clients) EXPECT_TRUE(CloseHandle(client));
  EXPECT_EQ(ErrorOf(WriteFile(clients[0], "x", 1, &written, nullptr)), ERROR_INVALID_HANDLE);
  close(server);  // its socket is still there
  EXPECT_EQ(ErrorOf(Open(kPipe)), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(Open(L"\\\\.\\pipe\\other")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(Open(L"\\\\.\\pipe\\..\\x")), ERROR_INVALID_NAME);
}

}  // namespace
}  // namespace tests
