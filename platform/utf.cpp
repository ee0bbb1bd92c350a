#include "platform/utf.h"

namespace platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kLast = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Returns the number of ASCII units at the front of `text`.
std::size_t AsciiLength(std::wstring_view text) {
  constexpr std::size_t kStep = 16;  // the compiler makes a few instructions of it
  std::size_t size = 0;
  for (char32_t all = 0; text.size() - size >= kStep; size += kStep) {
    for (std::size_t i = 0; i < kStep; ++i) all |= static_cast<char32_t>(text[size + i]);
    if (all >= 0x80) break;
  }
  while (size < text.size() && static_cast<char32_t>(text[size]) < 0x80) ++size;
  return size;
}

/// Returns the number of bytes that ToUtf8 needs at most.
std::size_t Room(std::wstring_view text) {
  std::size_t room = 0;
  while (!text.empty()) {
    const std::size_t ascii = AsciiLength(text);
    room += ascii;
    text.remove_prefix(ascii);
    if (text.empty()) break;
    const auto unit = static_cast<char32_t>(text[0]);
    room += 2U + (unit >= 0x800) + (unit >= kFirstSupplementary);
    text.remove_prefix(1);
  }
  return room;
}

/// Writes the bytes of a code point that is not ASCII and moves `out` behind them.
void PutUtf8(char*& out, char32_t code) {
  const auto put = [&out](char32_t byte) { *out++ = static_cast<char>(byte); };
  const auto putTrail = [&put, code](int shift) { put(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x800) {
    put(0xC0 | (code >> 6));
  } else if (code < kFirstSupplementary) {
    put(0xE0 | (code >> 12));
    putTrail(6);
  } else {
    put(0xF0 | (code >> 18));
    putTrail(12);
    putTrail(6);
  }
  putTrail(0);
}

/// The number of trail bytes behind a lead byte, and the range of the first of them, which excludes
/// overlong forms, surrogates and numbers above the last code point.
struct Lead {
  int trails;
  unsigned char low;
  unsigned char high;
};

constexpr Lead LeadOf(unsigned char byte) {
  if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
  if (byte < 0xE0) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte < 0xF0) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  return {3, 0x80, 0xBF};
}

/// Takes one code point that is not ASCII, or one maximal ill-formed part, off the front.
char32_t TakeUtf8(const unsigned char*& at, const unsigned char* end) {
  const unsigned char first = *at++;
  const Lead lead = LeadOf(first);
  if (lead.trails == 0) return kReplacement;
  char32_t code = first & (0x3FU >> lead.trails);
  for (int i = 0; i < lead.trails; ++i) {
    const unsigned char low = i == 0 ? lead.low : 0x80;
    const unsigned char high = i == 0 ? lead.high : 0xBF;
    if (at == end || *at < low || *at > high) return kReplacement;
    code = (code << 6) | (*at++ & 0x3FU);
  }
  return code;
}

bool IsTrail(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

/// Hands the units of UTF-8 text to `add`. ASCII and the three-byte forms of Japanese text take a
/// fast path.
template <typename Add>
void Decode(std::string_view text, Add add) {
  const auto* at = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* const end = at + text.size();
  while (at != end) {
    if (*at < 0x80) {
      add(*at++);
    } else if (*at > 0xE0 && *at < 0xED && end - at >= 3 && IsTrail(at[1]) && IsTrail(at[2])) {
      add((at[0] & 0xFU) << 12 | (at[1] & 0x3FU) << 6 | (at[2] & 0x3FU));
      at += 3;
    } else {
      const char32_t code = TakeUtf8(at, end);
      if (code < kFirstSupplementary) {
        add(code);
      } else {
        add(0xD800 + ((code - kFirstSupplementary) >> 10));
        add(0xDC00 + ((code - kFirstSupplementary) & 0x3FF));
      }
    }
  }
}

}  // namespace

char32_t TakeCodePoint(std::wstring_view& text) {
  const char32_t first = static_cast<char32_t>(text[0]);
  text.remove_prefix(1);
  if (!IsHighSurrogate(first) || text.empty()) return first;
  const char32_t second = static_cast<char32_t>(text[0]);
  if (!IsLowSurrogate(second)) return first;
  text.remove_prefix(1);
  return kFirstSupplementary + ((first - 0xD800) << 10) + (second - 0xDC00);
}

std::string ToUtf8(std::wstring_view text) {
  std::string bytes(Room(text), '\0');
  char* out = bytes.data();
  while (!text.empty()) {
    const std::size_t ascii = AsciiLength(text);
    for (std::size_t i = 0; i < ascii; ++i) *out++ = static_cast<char>(text[i]);
    text.remove_prefix(ascii);
    if (text.empty()) break;
    const char32_t code = TakeCodePoint(text);
    const bool encodable = code <= kLast && !IsHighSurrogate(code) && !IsLowSurrogate(code);
    PutUtf8(out, encodable ? code : kReplacement);
  }
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
  return bytes;
}

std::wstring FromUtf8(std::string_view text) {
  std::wstring units(text.size(), L'\0');  // no sequence has more units than bytes
  units.resize(DecodeUtf8(text, units.data(), units.size()));
  return units;
}

std::size_t DecodeUtf8(std::string_view text, wchar_t* target, std::size_t capacity) {
  std::size_t count = 0;
  Decode(text, [&](char32_t unit) {
    if (count < capacity) target[count] = static_cast<wchar_t>(unit);
    ++count;
  });
  return count;
}

std::string ToUtf16LeBytes(std::wstring_view text) {
  std::string bytes;
  bytes.reserve(2 * text.size());
  const auto add = [&bytes](char32_t unit) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  };
  for (const wchar_t each : text) {
    char32_t unit = static_cast<char32_t>(each);
    if (unit > kLast) unit = kReplacement;
    if (unit >= kFirstSupplementary) {
      add(0xD800 + ((unit - kFirstSupplementary) >> 10));
      unit = 0xDC00 + ((unit - kFirstSupplementary) & 0x3FF);
    }
    add(unit);
  }
  return bytes;
}

std::wstring FromUtf16LeBytes(std::string_view bytes) {
  std::wstring units;
  units.reserve((bytes.size() + 1) / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto low = static_cast<unsigned char>(bytes[i]);
    const auto high = static_cast<unsigned char>(bytes[i + 1]);
    units.push_back(static_cast<wchar_t>(low | (high << 8)));
  }
  if (bytes.size() % 2 != 0) units.push_back(static_cast<wchar_t>(kReplacement));
  return units;
}

}  // namespace platform
