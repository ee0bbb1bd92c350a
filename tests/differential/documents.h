#pragma once

// Policy documents made up from a number: good ones, odd ones and broken ones. The same number
// gives the same document in both homes.

#include <cstdint>
#include <string>
#include <vector>

namespace differential {

/// Numbers that look random and are the same everywhere.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : m_state(seed * 2862933555777941757U + 3037000493U) {}

  /// 0 to `count` - 1.
  std::size_t Below(std::size_t count) {
    m_state = m_state * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::size_t>((m_state >> 33) % count);
  }
  bool OneIn(std::size_t count) { return Below(count) == 0; }

  template <class List>
  auto Of(const List& list) {
    return list[Below(std::size(list))];
  }

 private:
  std::uint64_t m_state;
};

struct Document {
  std::wstring kind;  ///< What is odd in it.
  std::wstring xml;
  std::vector<std::wstring> elementIds;  ///< As they read when all is well.
};

Document MakeDocument(unsigned number);

/// A text that may be a number.
std::wstring MakeNumber(Dice& dice);

}  // namespace differential
