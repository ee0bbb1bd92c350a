#include "app/rehearsal/progress.h"

#include <unistd.h>

#include <chrono>
#include <iostream>

namespace app {
namespace {

std::chrono::seconds SinceTheFirst() {
  using Clock = std::chrono::steady_clock;
  static const Clock::time_point start = Clock::now();
  return std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
}

}  // namespace

Progress::Progress() : m_isSeen(isatty(STDERR_FILENO) != 0) {
  SinceTheFirst();
}

Progress::~Progress() {
  if (!m_line.empty()) std::cerr << "\r" << std::string(m_line.size(), ' ') << "\r" << std::flush;
}

void Progress::Tick() {
  const auto seconds = SinceTheFirst().count();
  std::string line = "rehearsing: " + std::to_string(seconds) + " s ...";
  if (!m_isSeen || seconds == 0 || line == m_line) return;
  m_line = std::move(line);
  std::cerr << "\r" << m_line << std::flush;
}

}  // namespace app
