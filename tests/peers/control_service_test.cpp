#include "peers/control_service/control_service.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <cstring>
#include <fstream>
#include <thread>

#include "platform/file.h"
#include "platform/posix/machine.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using peers::ControlService;
using peers::Descriptor;

/// A client as the C library makes one.
Descriptor Connect() {
  sockaddr_un address{AF_UNIX, {}};
  const fs::path pipe = platform::MachineRoot() / "pipe" / "hlwatermark";
  std::strncpy(address.sun_path, pipe.c_str(), sizeof address.sun_path - 1);
  Descriptor client(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  if (connect(client.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    return Descriptor();
  return client;
}

std::string Message(const wchar_t* text) {
  return platform::ToUtf16LeBytes(text) + std::string(2, '\0');
}

void Send(const Descriptor& client, const std::string& bytes) {
  EXPECT_EQ(send(client.Get(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
}

std::string Show(const peers::PipeEvent& event) {
  const std::string size = std::to_string(event.size);
  return (event.text ? platform::ToUtf8(*event.text) : "malformed " + size) + "\n";
}

/// Everything that has been sent by now.
std::string Serve(ControlService& service) {
  std::string events;
  std::stop_source stop;
  stop.request_stop();
  service.Serve([&](const peers::PipeEvent& event) { events += Show(event); }, stop.get_token());
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
  EXPECT_EQ(Serve(service),
            "Release\nRelease\nRelease\nSetting\nmalformed 8\nmalformed 18\nmalformed 100000\n"
            "malformed 16\nmalformed 16\nＳ透かし設定中\n");
  Send(silent, Message(L"Release"));
  EXPECT_EQ(Serve(service), "Release\n");
  EXPECT_EQ(Serve(service), "");
}

TEST(ControlService, LetsTheFirstClientGoWhenTooManyStay) {
  const tests::TestMachine machine;
  ControlService service;
  std::vector<Descriptor> clients;
  for (std::size_t i = 0; i < ControlService::kMaxClients + 1; ++i) {
    if (i == ControlService::kMaxClients) Send(clients.front(), Message(L"Release"));
    clients.push_back(Connect());
    EXPECT_EQ(Serve(service), i == ControlService::kMaxClients ? "Release\n" : "");
  }
  for (std::size_t i : {ControlService::kMaxClients, std::size_t{1}}) {
    Send(clients[i], Message(L"Setting"));
    EXPECT_EQ(Serve(service), "Setting\n");
  }
  EXPECT_LT(send(clients[0].Get(), "x", 1, MSG_NOSIGNAL), 0);
}

TEST(ControlService, WaitsForEventsUntilItIsStopped) {
  const tests::TestMachine machine;
  ControlService service;
  std::stop_source stop;
  std::string events;
  std::thread client([] {
    for (int i = 0; i < 100; ++i) Send(Connect(), Message(L"Release"));
    Send(Connect(), Message(L"Setting"));
  });
  const auto before = std::chrono::system_clock::now();
  service.Serve(
      [&](const peers::PipeEvent& event) {
        EXPECT_GE(event.time, before);
        events += event.text->front() == L'R' ? 'r' : 's';
        if (events.back() == 's') stop.request_stop();
      },
      stop.get_token());
  client.join();
  EXPECT_EQ(events, std::string(100, 'r') + 's');

  std::stop_source idle;
  std::thread stopper([&] { idle.request_stop(); });
  service.Serve([](const peers::PipeEvent&) { ADD_FAILURE(); }, idle.get_token());
  stopper.join();
}

TEST(ControlService, ReplacesADeadServerAndNoLivingOne) {
  const tests::TestMachine machine;
  if (fork() == 0) {
    new ControlService;
    _exit(0);  // the socket stays behind
  }
  wait(nullptr);
  ASSERT_TRUE(fs::exists(platform::MachineRoot() / "pipe" / "hlwatermark"));
  EXPECT_FALSE(Connect());
  {
    ControlService service;
    try {
      ControlService second;
      ADD_FAILURE() << "two servers";
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code(), std::errc::address_in_use);
    }
    Send(Connect(), Message(L"Release"));
    EXPECT_EQ(Serve(service), "Release\n");
  }
  EXPECT_FALSE(fs::exists(platform::MachineRoot() / "pipe" / "hlwatermark"));
  EXPECT_FALSE(Connect());
}

TEST(ControlService, TellsWhatKeepsItFromThePipe) {
  const tests::TestMachine machine;
  std::ofstream(platform::MachineRoot() / "pipe") << "in the way";
  EXPECT_THROW(ControlService(), std::system_error);
}

TEST(ControlService, HearsTheMachinesOwnClientsOnALongPathToo) {
  const tests::TestMachine machine;
  const fs::path root = platform::MachineRoot() / std::string(150, 'x');
  setenv("SIGIL_ROOT", root.c_str(), 1);
  ControlService service;
  HANDLE pipe = CreateFileW(L"\\\\.\\pipe\\hlwatermark", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                            0, nullptr);
  DWORD written = 0;
  EXPECT_TRUE(WriteFile(pipe, Message(L"Release").data(), 16, &written, nullptr));
  EXPECT_TRUE(CloseHandle(pipe));
  EXPECT_EQ(Serve(service), "Release\n");
}

}  // namespace
