#pragma once

#include <chrono>
#include <cstdio>
#include <iostream>
#include <string>

#include "app/text/table.h"

namespace app {

/// For somebody at a terminal: one line on standard error, "rehearsing: 3 s ...", that comes after
/// a second and goes with this object.
class Progress {
 public:
  Progress() = default;
  ~Progress() {
    if (!m_line.empty()) std::cerr << "\r" << std::string(m_line.size(), ' ') << "\r" << std::flush;
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Tick() {
    const auto passed = std::chrono::steady_clock::now() - m_start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
    std::string line = "rehearsing: " + std::to_string(seconds) + " s ...";
    if (!m_isSeen || seconds == 0 || line == m_line) return;
    m_line = std::move(line);
    std::cerr << "\r" << m_line << std::flush;
  }

 private:
  const bool m_isSeen = IsTerminal(stderr);
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
  std::string m_line;  ///< As it stands there.
};

}  // namespace app
