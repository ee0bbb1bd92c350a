#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/posix/handle.h"
#include "platform/posix/machine.h"
#include "tests/support/test_machine.h"

namespace {

constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\TestPipe";

HANDLE Open(LPCWSTR path, DWORD access = GENERIC_WRITE, DWORD disposition = OPEN_EXISTING) {
  SetLastError(0);
  return CreateFileW(path, access, 0, nullptr, disposition, 0, nullptr);
}

void ExpectNone(HANDLE handle, DWORD error) {
  EXPECT_EQ(handle, INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), error);
}

class Pipes : public testing::Test {
 protected:
  /// The server's end, which lets `backlog` + 1 clients wait.
  static platform::Descriptor Serve(int backlog) {
    const auto folder = platform::MachineRoot() / "pipe";
    std::filesystem::create_directories(folder);
    const std::filesystem::path old = std::filesystem::current_path();
    std::filesystem::current_path(folder);  // the folder's name may be too long for an address
    platform::Descriptor server(socket(AF_UNIX, SOCK_SEQPACKET, 0));
    const sockaddr_un address = {AF_UNIX, "testpipe"};
    EXPECT_EQ(bind(server.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(server.Get(), backlog), 0);
    std::filesystem::current_path(old);
    return server;
  }
  static std::string Receive(const platform::Descriptor& client) {
    char bytes[64];
    const ssize_t size = recv(client.Get(), bytes, sizeof bytes, 0);
    return size < 0 ? "failed" : std::string(bytes, static_cast<std::size_t>(size));
  }
  static platform::Descriptor Accept(const platform::Descriptor& server) {
    return platform::Descriptor(accept(server.Get(), nullptr, nullptr));
  }

  tests::TestMachine m_machine;
};

TEST_F(Pipes, CarryMessages) {
  ExpectNone(Open(kPipe), ERROR_FILE_NOT_FOUND);
  const std::string root = platform::MachineRoot().string();
  for (const std::string& folder : {root, root + "/" + std::string(120, 'x')}) {
    setenv("SIGIL_ROOT", folder.c_str(), 1);
    const platform::Descriptor server = Serve(1);
    const HANDLE pipe = Open(L"\\\\.\\PIPE\\testPIPE");
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    const platform::Descriptor client = Accept(server);
    DWORD written = 99;
    EXPECT_TRUE(WriteFile(pipe, "R\0e\0", 4, &written, nullptr));
    EXPECT_EQ(written, 4U);
    EXPECT_TRUE(WriteFile(pipe, "second", 6, nullptr, nullptr));
    EXPECT_EQ(Receive(client), std::string("R\0e\0", 4));
    EXPECT_EQ(Receive(client), "second");
    EXPECT_FALSE(WriteFile(pipe, nullptr, 1, &written, nullptr));
    EXPECT_TRUE(CloseHandle(pipe));
    EXPECT_EQ(Receive(client), "");
    EXPECT_FALSE(WriteFile(pipe, "x", 1, &written, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  }
  setenv("SIGIL_ROOT", root.c_str(), 1);
}

TEST_F(Pipes, TellWhyTheyCannotBeUsed) {
  {
    const platform::Descriptor server = Serve(0);
    std::vector<HANDLE> clients;
    HANDLE next;
    while (clients.size() < 20 && (next = Open(kPipe)) != INVALID_HANDLE_VALUE)
      clients.push_back(next);
    ExpectNone(next, ERROR_PIPE_BUSY);
    ASSERT_FALSE(clients.empty());
    Accept(server);  // and closes it at once
    DWORD written = 99;
    EXPECT_FALSE(WriteFile(clients[0], "x", 1, &written, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_NO_DATA);
    EXPECT_EQ(written, 0U);
    for (const HANDLE client : clients) EXPECT_TRUE(CloseHandle(client));
  }
  ExpectNone(Open(kPipe), ERROR_FILE_NOT_FOUND);  // the server is dead, its socket is still there
  ExpectNone(Open(L"\\\\.\\pipe\\"), ERROR_INVALID_NAME);
  ExpectNone(Open(L"\\\\.\\pipe\\..\\x"), ERROR_INVALID_NAME);
}

TEST_F(Pipes, ShareTheirCallsWithFiles) {
  constexpr wchar_t kFile[] = L"C:\\SigilTest\\file";
  m_machine.Write(kFile, "before");
  const HANDLE file = Open(kFile);
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(file, "AF", 2, &written, nullptr));
  EXPECT_TRUE(CloseHandle(file));
  EXPECT_EQ(m_machine.Read(kFile), "AFfore");

  const HANDLE reader = Open(kFile, GENERIC_READ);
  EXPECT_FALSE(WriteFile(reader, "x", 1, &written, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(CloseHandle(reader));

  ExpectNone(Open(L"C:\\SigilTest\\no"), ERROR_FILE_NOT_FOUND);
  ExpectNone(Open(L"C:\\no\\no"), ERROR_PATH_NOT_FOUND);
  ExpectNone(Open(L"C:\\SigilTest\\file\\x"), ERROR_PATH_NOT_FOUND);
  ExpectNone(Open(L"C:\\SigilTest"), ERROR_ACCESS_DENIED);
  ExpectNone(Open(L"C:\\SigilTest", GENERIC_READ), ERROR_ACCESS_DENIED);
  ExpectNone(Open(L""), ERROR_PATH_NOT_FOUND);
  ExpectNone(Open(nullptr), ERROR_PATH_NOT_FOUND);
  ExpectNone(Open(kFile, GENERIC_WRITE, 2), ERROR_INVALID_PARAMETER);
}

}  // namespace
