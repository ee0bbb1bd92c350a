#pragma once

// The watermark control service's end of the pipe \\.\pipe\hlwatermark on a Linux machine: a socket
// of type SOCK_SEQPACKET, `pipe/hlwatermark` below the machine's root, where one message is one
// event. A client connects, sends and goes; the service never answers.
//
// A message is 16 bytes: seven UTF-16LE characters ("Release" or "Setting") and a terminating 0.
// Any other message is reported as malformed; an empty one ends its client's connection. At most
// `kMaxClients` are connected at once: one more disconnects the oldest.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "peers/descriptor.h"
#include "peers/file_lock.h"

namespace peers {

struct PipeEvent {
  std::chrono::system_clock::time_point time;
  /// The size of the message in bytes, also when it was longer than 16.
  std::size_t size;
  /// Without the terminating 0; null when the message is malformed.
  std::optional<std::wstring> text;
};

class ControlService {
 public:
  static constexpr std::size_t kMaxClients = 64;

  /// Takes the pipe of the current machine; clients can connect as soon as it returns. The socket
  /// of a dead server is replaced. Throws std::system_error: EADDRINUSE when another server has the
  /// pipe, or the error of its folder or socket.
  ControlService();
  /// Removes the pipe.
  ~ControlService();
  ControlService(const ControlService&) = delete;
  ControlService& operator=(const ControlService&) = delete;

  /// Calls `onEvent` on this thread with each message, until `stop` is requested. Messages sent
  /// before the request are still reported. Throws what `onEvent` throws. May be called again.
  ///
  /// A program that wants to end with a signal blocks it in all threads, waits for it with sigwait
  /// in one, and requests the stop from there.
  using OnEvent = std::function<void(const PipeEvent&)>;
  void Serve(const OnEvent& onEvent, const std::stop_token& stop);

 private:
  std::filesystem::path m_path;
  FileLock m_turn;
  Descriptor m_listener;
  std::vector<Descriptor> m_clients;
};

}  // namespace peers
