#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "management/notification_release_mode.h"
#include "platform/posix/machine/machine.h"
#include "tests/support/rows.h"

namespace tests {
namespace {

using SigilSettingManagement::NotificationReleaseMode;

/// A server of the pipe, made of nothing but the system's sockets.
class Server {
 public:
  Server() {
    const std::filesystem::path path = platform::MachineRoot() / "pipe" / "hlwatermark";
    std::filesystem::create_directories(path.parent_path());
    sockaddr_un address{AF_UNIX, {}};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(m_socket, 4), 0);
  }
  ~Server() { close(m_socket); }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// All that the next client sends before it goes, one message in brackets each.
  std::string Receive() {
    const int client = accept(m_socket, nullptr, nullptr);
    std::string all;
    char bytes[64];
    for (ssize_t size = 0; (size = recv(client, bytes, sizeof bytes, 0)) > 0;)
      all += "[" + std::string(bytes, static_cast<std::size_t>(size)) + "]";
    close(client);
    return all;
  }

 private:
  int m_socket = socket(AF_UNIX, SOCK_SEQPACKET, 0);
};

class Notification : public testing::Test {
 protected:
  const Transcript m_told{{"management/transcripts/notification"}};
};

TEST_F(Notification, SendsSixteenBytesAtOnce) {
  TestMachine machine;
  Server server;
  EXPECT_EQ(NotificationReleaseMode(L"Release"), 0);
  EXPECT_EQ(NotificationReleaseMode(L"Setting"), 0);
  EXPECT_EQ(server.Receive(), std::string("[R\0e\0l\0e\0a\0s\0e\0\0\0]", 18));
  EXPECT_EQ(server.Receive(), std::string("[S\0e\0t\0t\0i\0n\0g\0\0\0]", 18));
  ExpectRecord(m_told("told", {"Release"}) + m_told("told", {"Setting"}));
}

TEST_F(Notification, EachFailureHasItsResultAndRecord) {
  std::optional<Server> server;
  const auto serve = [&server](TestMachine&) { server.emplace(); };
  ExpectRows(m_told, serve, [] { return NotificationReleaseMode(L"Release"); });
  TestMachine machine;
  EXPECT_EQ(NotificationReleaseMode(L""), -5);
  ExpectRecord(m_told("no message"));
}

}  // namespace
}  // namespace tests
