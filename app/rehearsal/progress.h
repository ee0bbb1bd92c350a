#pragma once

// That work goes on, for somebody at a terminal.

#include <string>

namespace app {

/// One line on standard error, "rehearsing: 3 s ...", in its lifetime alone. It comes when the
/// process has been at such work for more than a second, and never where no terminal is.
class Progress {
 public:
  Progress();
  /// Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// To be called a few times in each second.
  void Tick();

 private:
  bool m_isSeen;
  std::string m_line;  ///< As it stands there.
};

}  // namespace app
