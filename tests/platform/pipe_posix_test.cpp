#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/posix/handle.h"
#include "platform/posix/machine.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace {

using tests::ErrorOf;

constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\TestPipe";

HANDLE Open(LPCWSTR path, DWORD access = GENERIC_WRITE) {
  return CreateFileW(path, access, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

class Pipes : public testing::Test {
 protected:
  Pipes() {
    const std::filesystem::path path = platform::MachineRoot() / "pipe" / "testpipe";
    std::filesystem::create_directories(path.parent_path());
    sockaddr_un address{AF_UNIX, {}};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_server.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_server.Get(), 0), 0);
  }

  tests::TestMachine m_machine;
  platform::Descriptor m_server{socket(AF_UNIX, SOCK_SEQPACKET, 0)};
};

TEST_F(Pipes, TellWhyTheyCannotBeUsed) {
  std::vector<HANDLE> clients;
  HANDLE next;
  while (clients.size() < 20 && (next = Open(kPipe)) != INVALID_HANDLE_VALUE)
    clients.push_back(next);
  EXPECT_EQ(ErrorOf(next), ERROR_PIPE_BUSY);
  ASSERT_FALSE(clients.empty());
  close(accept(m_server.Get(), nullptr, nullptr));
  DWORD written = 99;
  EXPECT_EQ(ErrorOf(WriteFile(clients[0], "x", 1, &written, nullptr)), ERROR_NO_DATA);
  EXPECT_EQ(written, 0U);
  for (const HANDLE client : clients) EXPECT_TRUE(CloseHandle(client));
  EXPECT_EQ(ErrorOf(WriteFile(clients[0], "x", 1, &written, nullptr)), ERROR_INVALID_HANDLE);
  m_server = {};  // its socket is still there
  EXPECT_EQ(ErrorOf(Open(kPipe)), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(Open(L"\\\\.\\pipe\\other")), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(ErrorOf(Open(L"\\\\.\\pipe\\..\\x")), ERROR_INVALID_NAME);
}

TEST_F(Pipes, ShareTheirCallsWithFiles) {
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\file";
  m_machine.Write(kFile, "before");
  for (const DWORD access : {GENERIC_WRITE, GENERIC_READ}) {
    const HANDLE file = Open(kFile, access);
    EXPECT_EQ(ErrorOf(WriteFile(file, "AF", 2, nullptr, nullptr)),
              access == GENERIC_WRITE ? ERROR_SUCCESS : ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CloseHandle(file));
  }
  EXPECT_EQ(m_machine.Read(kFile), "AFfore");
  using Row = std::pair<const wchar_t*, DWORD>;
  for (const auto& [path, error] :
       {Row(L"C:\\SigilTest\\no", ERROR_FILE_NOT_FOUND), Row(L"C:\\no\\no", ERROR_PATH_NOT_FOUND),
        Row(L"C:\\SigilTest\\file\\x", ERROR_PATH_NOT_FOUND), Row(L"", ERROR_PATH_NOT_FOUND),
        Row(L"C:\\SigilTest", ERROR_ACCESS_DENIED), Row(nullptr, ERROR_PATH_NOT_FOUND)})
    EXPECT_EQ(ErrorOf(Open(path, GENERIC_READ)), error);
}

}  // namespace
