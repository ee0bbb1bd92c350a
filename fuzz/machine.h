#pragma once

// The machine of a fuzzer: one folder for the life of the process, with the files that the input
// gives.

#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/utf.h"

namespace fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Two texts in one input, parted by its first line that holds `--` alone.
struct Parts {
  std::string_view first;
  std::string_view second;
};

inline Parts Split(std::string_view input) {
  constexpr std::string_view kBorder = "\n--\n";
  const std::size_t at = input.find(kBorder);
  if (at == std::string_view::npos) return {input, {}};
  return {input.substr(0, at), input.substr(at + kBorder.size())};
}

/// Any units at all: UTF-16 where the input begins with the mark, else UTF-8.
inline std::wstring Wide(std::string_view input) {
  if (input.starts_with("\xFF\xFE")) return platform::FromUtf16LeBytes(input.substr(2));
  return platform::FromUtf8(input);
}

class Machine {
 public:
  Machine() {
    std::string name = (std::filesystem::temp_directory_path() / "sigil-fuzz-XXXXXX").string();
    m_root = mkdtemp(name.data());
    setenv("SIGIL_ROOT", m_root.c_str(), 1);
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;
  ~Machine() { std::filesystem::remove_all(m_root); }

  void Write(const std::string& path, std::string_view bytes) const {
    std::filesystem::create_directories((m_root / path).parent_path());
    std::ofstream(m_root / path, std::ios::binary) << bytes;
  }

 private:
  std::filesystem::path m_root;
};

}  // namespace fuzz
