#include "peers/control_service/control_service.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

#include "platform/posix/machine/machine.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace {

using peers::ControlService;
using peers::Descriptor;

/// A client as the C library makes one.
Descriptor Connect() {
  sockaddr_un address{AF_UNIX, {}};
  const auto pipe = platform::MachineRoot() / "pipe" / "hlwatermark";
  std::strncpy(address.sun_path, pipe.c_str(), sizeof address.sun_path - 1);
  Descriptor client(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const int result = connect(client.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  return result == 0 ? std::move(client) : Descriptor();
}

std::string Message(const wchar_t* text) {
  return platform::ToUtf16LeBytes(text) + std::string(2, '\0');
}

void Send(const Descriptor& client, const std::string& bytes) {
  EXPECT_EQ(send(client.Get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
}

/// Everything that has been sent by now.
std::string Serve(ControlService& service) {
  std::string events;
  std::stop_source stop;
  stop.request_stop();
  const auto before = std::chrono::system_clock::now();
  service.Serve(
      [&](const peers::PipeEvent& event) {
        EXPECT_GE(event.time, before);
        events += event.text ? platform::ToUtf8(*event.text) : std::to_string(event.size);
        events += ' ';
      },
      stop.get_token());
  return events;
}

TEST(ControlService, TellsEachMessageWhateverItsClientDoes) {
  const tests::TestMachine machine;
  ControlService service;
  const Descriptor silent = Connect();
  Connect();  // and gone again
  for (int i = 0; i < 3; ++i) Send(Connect(), Message(L"Release"));
  const Descriptor chatty = Connect();
  for (const std::string& bytes :
       {Message(L"Setting"), Message(L"Set"), Message(L"Settings"), std::string(100'000, 'x'),
        Message(L"Setting").replace(8, 2, 2, '\0'), std::string(16, 'x'),
        Message(L"Ｓ透かし設定中")})
    Send(chatty, bytes);
  EXPECT_EQ(Serve(service), "Release Release Release Setting 8 18 100000 16 16 Ｓ透かし設定中 ");
  Send(silent, Message(L"Release"));
  EXPECT_EQ(Serve(service), "Release ");
  EXPECT_EQ(Serve(service), "");
}

}  // namespace
