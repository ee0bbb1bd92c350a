#include <signal.h>
#include <time.h>

#include <cstdio>
#include <iostream>
#include <thread>

#include "app/commands/command_line.h"
#include "peers/control_service/control_service.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

/// A stop that SIGINT or SIGTERM request.
class SignalStop {
 public:
  SignalStop() {
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGINT);
    sigaddset(&m_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    m_waiter = std::jthread([this] {
      int signal = 0;
      sigwait(&m_signals, &signal);
      m_stop.request_stop();
    });
  }
  // NOLINTNEXTLINE(bugprone-bad-signal-to-kill-thread): the thread waits for it.
  ~SignalStop() { pthread_kill(m_waiter.native_handle(), SIGTERM); }
  SignalStop(const SignalStop&) = delete;
  SignalStop& operator=(const SignalStop&) = delete;

  std::stop_token Token() const { return m_stop.get_token(); }

 private:
  sigset_t m_signals = {};
  std::stop_source m_stop;
  std::jthread m_waiter;
};

std::string Stamp(std::chrono::system_clock::time_point time) {
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
  const time_t seconds = std::chrono::system_clock::to_time_t(time);
  tm local = {};
  localtime_r(&seconds, &local);
  char text[64];
  const std::size_t length = strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  std::snprintf(text + length, sizeof text - length, ".%03d", static_cast<int>(milliseconds));
  return text;
}

void Print(const peers::PipeEvent& event) {
  std::cout << Stamp(event.time) << " "
            << (event.text ? platform::ToUtf8(platform::Visible(*event.text))
                           : "malformed message of " + std::to_string(event.size) + " bytes")
            << std::endl;
}

int Serve() {
  const SignalStop stop;  // before the pipe, so that no signal leaves it behind
  peers::ControlService service;
  std::cout << "The control service listens; SIGINT or SIGTERM stops it." << std::endl;
  service.Serve(Print, stop.Token());
  std::cout << "The control service has stopped." << std::endl;
  return 0;
}

}  // namespace

void AddServe(CommandLine& line) {
  line.Add("serve", "Runs the control service and prints its events", Serve);
}

}  // namespace app
