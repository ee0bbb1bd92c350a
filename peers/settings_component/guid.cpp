#include "peers/settings_component/guid.h"

#include <charconv>

namespace peers {
namespace {

constexpr std::size_t kTextSize = 36;

/// The byte of the record that each pair of hexadecimal digits stands for.
constexpr std::size_t kByteOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

constexpr bool HyphenBefore(std::size_t pair) {
  return pair == 4 || pair == 6 || pair == 8 || pair == 10;
}

}  // namespace

std::string GuidText(const GUID& guid) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto* bytes = reinterpret_cast<const BYTE*>(&guid);
  std::string text;
  for (std::size_t pair = 0; pair < sizeof guid; ++pair) {
    if (HyphenBefore(pair)) text += '-';
    const BYTE byte = bytes[kByteOrder[pair]];
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::optional<GUID> ParseGuid(std::string_view text) {
  if (text.size() != kTextSize) return std::nullopt;
  GUID guid{};
  auto* bytes = reinterpret_cast<BYTE*>(&guid);
  const char* place = text.data();
  for (std::size_t pair = 0; pair < sizeof guid; ++pair) {
    if (HyphenBefore(pair) && *place++ != '-') return std::nullopt;
    if (std::from_chars(place, place + 2, bytes[kByteOrder[pair]], 16).ptr != place + 2)
      return std::nullopt;
    place += 2;
  }
  return guid;
}

}  // namespace peers
