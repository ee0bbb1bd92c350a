#pragma once

// Sealing policy files with a cipher that is not the system's own.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tests {

/// All zero: the key of a machine without key source.
struct Key {
  std::array<std::uint8_t, 32> key = {};
  std::array<std::uint8_t, 16> iv = {};
};

/// The key that comes of a key source's material.
inline Key KeyOf(std::string_view material) {
  Key folded;
  for (std::size_t i = 0; i < material.size(); ++i) {
    folded.key[i % 32] = static_cast<std::uint8_t>(folded.key[i % 32] ^ material[i]);
    folded.iv[i % 16] = static_cast<std::uint8_t>(folded.iv[i % 16] ^ material[i]);
  }
  return folded;
}

/// One message of AES-256 in CBC mode; the length of `clear` is a multiple of 16.
std::string Seal(std::string_view clear, const Key& key);

}  // namespace tests
