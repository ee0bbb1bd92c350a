#pragma once

// A machine of a benchmark's own.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace bench {

class Machine {
 public:
  explicit Machine(std::string_view description) {
    std::string name = (std::filesystem::temp_directory_path() / "sigil-bench-XXXXXX").string();
    m_root = mkdtemp(name.data());
    setenv("SIGIL_ROOT", m_root.c_str(), 1);
    Write("machine.ini", description);
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine() { std::filesystem::remove_all(m_root); }

  /// `path` is below the root.
  void Write(const std::string& path, std::string_view bytes) const {
    std::filesystem::create_directories((m_root / path).parent_path());
    std::ofstream(m_root / path, std::ios::binary) << bytes;
  }

 private:
  std::filesystem::path m_root;
};

}  // namespace bench
