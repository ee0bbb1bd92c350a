#include "peers/control_service/control_service.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>
#include <string_view>

#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

namespace peers {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMessageSize = 16;
constexpr int kBacklog = 16;
/// More than a socket holds at once: one round takes all messages that were there when it began,
/// but an endless sender does not keep the others waiting.
constexpr int kMessagesARound = 1024;

fs::path PipePath() {
  return platform::MachineRoot() / "pipe" / "hlwatermark";
}

/// Takes the lock that is held as long as the pipe. Its owner may remove a left-over socket.
FileLock TakePipe(const fs::path& path) {
  auto turn = FileLock::TryFor(fs::path(path) += ".lock", std::chrono::milliseconds(0));
  if (!turn) ThrowSystemError(path.string() + " is served by another process", EADDRINUSE);
  return std::move(*turn);
}

/// Binds through the folder's descriptor, because a socket's address is shorter than a path may be.
/// The mode is set first, because the name gets the mode that the socket has then.
Descriptor Listen(const fs::path& path) {
  const Descriptor folder = platform::OpenFolder(path.parent_path(), platform::Missing::kFails);
  if (!folder) ThrowSystemError(path.string());
  const std::string name =
      "/proc/self/fd/" + std::to_string(folder.Get()) + "/" + path.filename().string();
  sockaddr_un address{AF_UNIX, {}};
  std::memcpy(address.sun_path, name.c_str(), name.size() + 1);

  Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  unlink(path.c_str());
  if (!listener || fchmod(listener.Get(), 0600) != 0 ||
      bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.Get(), kBacklog) != 0)
    ThrowSystemError(path.string());
  return listener;
}

std::optional<std::wstring> Text(std::string_view bytes) {
  std::wstring text = platform::FromUtf16LeBytes(bytes);
  if (bytes.size() != kMessageSize || text.find(L'\0') != text.size() - 1) return std::nullopt;
  text.pop_back();
  return text;
}

/// Reports the messages of `client`. Returns false when it has disconnected.
bool Receive(const Descriptor& client, const ControlService::OnEvent& onEvent) {
  for (int i = 0; i < kMessagesARound; ++i) {
    char bytes[kMessageSize];
    const ssize_t size = recv(client.Get(), bytes, sizeof bytes, MSG_DONTWAIT | MSG_TRUNC);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return errno == EAGAIN;
    if (size == 0) return false;
    const auto whole = static_cast<std::size_t>(size);
    const bool tooLong = whole > sizeof bytes;
    onEvent(
        {std::chrono::system_clock::now(), whole, tooLong ? std::nullopt : Text({bytes, whole})});
  }
  return true;
}

/// Waits until one of the descriptors is readable.
void Wait(const Descriptor& wake, const Descriptor& listener,
          const std::vector<Descriptor>& clients) {
  std::vector<pollfd> waits = {{wake.Get(), POLLIN, 0}, {listener.Get(), POLLIN, 0}};
  for (const Descriptor& client : clients) waits.push_back({client.Get(), POLLIN, 0});
  if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) ThrowSystemError("poll");
}

/// Accepts the waiting clients. If the process has no descriptor left for a new client, the oldest
/// one is disconnected.
void Accept(const Descriptor& listener, std::vector<Descriptor>& clients,
            const ControlService::OnEvent& onEvent) {
  for (std::size_t i = 0; i < ControlService::kMaxClients; ++i) {
    Descriptor client(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
    const int error = errno;
    if (!client && error == EAGAIN) return;
    if (!client && (error == EINTR || error == ECONNABORTED)) continue;
    if (!client && clients.empty()) ThrowSystemError("accept", error);
    if (!client || clients.size() == ControlService::kMaxClients) {
      Receive(clients.front(), onEvent);
      clients.erase(clients.begin());
    }
    if (client) clients.push_back(std::move(client));
  }
}

}  // namespace

ControlService::ControlService()
    : m_path(PipePath()), m_turn(TakePipe(m_path)), m_listener(Listen(m_path)) {}

ControlService::~ControlService() {
  unlink(m_path.c_str());
}

void ControlService::Serve(const OnEvent& onEvent, const std::stop_token& stop) {
  const Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wake) ThrowSystemError("eventfd");
  const std::stop_callback onStop(stop, [&] { eventfd_write(wake.Get(), 1); });

  for (bool last = false; !last;) {
    Wait(wake, m_listener, m_clients);
    last = stop.stop_requested();  // first, so that the last round finds every message sent before
    Accept(m_listener, m_clients, onEvent);
    std::erase_if(m_clients, [&](const Descriptor& client) { return !Receive(client, onEvent); });
  }
}

}  // namespace peers
