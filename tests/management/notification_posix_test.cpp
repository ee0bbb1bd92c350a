#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "management/notification_release_mode.h"
#include "platform/posix/machine.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"
#include "tests/support/twist.h"

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

const std::string kTold = R"(
3 153100450 SigilSettingManagement::NotificationReleaseMode "★★★透かし解除・設定通知イベント通知＜$1＞★★★"
)";

TEST(Notification, SendsSixteenBytesAtOnce) {
  TestMachine machine;
  Server server;
  EXPECT_EQ(NotificationReleaseMode(L"Release"), 0);
  EXPECT_EQ(NotificationReleaseMode(L"Setting"), 0);
  EXPECT_EQ(server.Receive(), std::string("[R\0e\0l\0e\0a\0s\0e\0\0\0]", 18));
  EXPECT_EQ(server.Receive(), std::string("[S\0e\0t\0t\0i\0n\0g\0\0\0]", 18));
  const std::string told = "CreateFileW\nWriteFile\nCloseHandle\nLocalFree\n" + kTold;
  ExpectRecord(Fill(told, {"Release"}) + Fill(told, {"Setting"}));
}

TEST(Notification, EachFailureHasItsResultAndRecord) {
  const auto check = [](const Twists& twists, const wchar_t* message, int result,
                        const std::string& record) {
    TestMachine machine;
    Server server;
    Apply(twists);
    EXPECT_EQ(NotificationReleaseMode(message), result);
    ExpectRecord(record);
  };
  const std::string noDescriptor = R"(
4 153100410 SigilSettingManagement::NotificationReleaseMode "セキュリティ記述子生成失敗。"
)";
  check(Twists(), L"", -5, R"(
4 153100680 SigilSettingManagement::NotificationReleaseMode "通知メッセージが空です。透かし制御サービスへイベント通知処理を中止します"
)");
  check(Fault("LocalAlloc"), L"Release", -1, noDescriptor);
  check(Fault("InitializeSecurityDescriptor"), L"Release", -1, "LocalFree\n" + noDescriptor);
  check(Fault("SetSecurityDescriptorDacl"), L"Release", -1, "LocalFree\n" + noDescriptor);
  check(Fault("CreateFileW", 0, ERROR_PIPE_BUSY), L"Release", -2, R"(
CreateFileW
5 153100420 SigilSettingManagement::NotificationReleaseMode code 231 "パイプをオープンできませんでした"
LocalFree
)");
  check(Fault("WriteFile", 0, ERROR_NO_DATA), L"Release", -3, R"(
CreateFileW
WriteFile
5 153100430 SigilSettingManagement::NotificationReleaseMode code 232 "パイプへの書き込みに失敗しました。"
CloseHandle
LocalFree
)");
  check(Fault("CloseHandle"), L"Release", -4, R"(
CreateFileW
WriteFile
CloseHandle
5 153100440 SigilSettingManagement::NotificationReleaseMode "ファイルクローズ失敗しました。"
LocalFree
)" + Fill(kTold, {"Release"}));
}

}  // namespace
}  // namespace tests
