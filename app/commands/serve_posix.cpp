#include <signal.h>

#include <ctime>
#include <iomanip>
#include <iostream>
#include <thread>

#include "app/commands/command_line.h"
#include "peers/control_service/control_service.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

/// Returns a token that SIGINT or SIGTERM stops.
std::stop_token StopOnSignal() {
  sigset_t signals = {};
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::stop_source stop;
  std::stop_token token = stop.get_token();
  std::thread([signals, stop]() mutable {
    int signal = 0;
    sigwait(&signals, &signal);
    stop.request_stop();
  }).detach();
  return token;
}

void Print(const peers::PipeEvent& event) {
  using std::chrono::system_clock, std::chrono::milliseconds, std::chrono::seconds;
  const std::time_t time = system_clock::to_time_t(std::chrono::floor<seconds>(event.time));
  const auto rest = std::chrono::floor<milliseconds>(event.time.time_since_epoch()) % seconds(1);
  std::cout << std::put_time(std::localtime(&time), "%Y-%m-%d %H:%M:%S.") << std::setfill('0')
            << std::setw(3) << rest.count() << " "
            << (event.text ? platform::ToUtf8(platform::Visible(*event.text))
                           : "malformed message of " + std::to_string(event.size) + " bytes")
            << std::endl;
}

int Serve() {
  // Before the pipe, so that no signal leaves it behind.
  const std::stop_token stop = StopOnSignal();
  peers::ControlService service;
  std::cout << "The control service listens; SIGINT or SIGTERM stops it." << std::endl;
  service.Serve(Print, stop);
  std::cout << "The control service has stopped." << std::endl;
  return 0;
}

}  // namespace

void AddServe(CommandLine& line) {
  line.Add("serve", "Runs the control service and prints its events", Serve);
}

}  // namespace app
