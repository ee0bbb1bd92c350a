#include "platform/codepage.h"

#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/posix/ansi.h"
#include "platform/posix/handle.h"
#include "platform/utf.h"

namespace platform {

namespace {

constexpr UINT kJapanese = 932;
constexpr wchar_t kNoCharacter = 0x30FB;  // what Windows reads for bytes that 932 has nothing for

/// One direction of the C library's conversion, a character at a time. Locked by its user.
class Converter {
 public:
  Converter(const char* to, const char* from) : m_descriptor(iconv_open(to, from)) {}
  ~Converter() {
    if (IsOpen()) iconv_close(m_descriptor);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  /// The number of bytes in `output`; 0 when there is no such character.
  template <std::size_t kCapacity>
  std::size_t Convert(std::string_view input, char (&output)[kCapacity]) {
    if (!IsOpen()) return 0;
    iconv(m_descriptor, nullptr, nullptr, nullptr, nullptr);
    char* from = const_cast<char*>(input.data());
    std::size_t left = input.size();
    char* to = output;
    std::size_t room = kCapacity;
    const std::size_t result = iconv(m_descriptor, &from, &left, &to, &room);
    return result == 0 && left == 0 ? kCapacity - room : 0;
  }

 private:
  bool IsOpen() const { return m_descriptor != reinterpret_cast<iconv_t>(-1); }

  iconv_t m_descriptor;
};

std::mutex g_guard;

bool IsLeadByte(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

/// Single bytes that Windows gives a place of its own although 932 has no characters for them.
wchar_t KeptByte(unsigned char byte) {
  if (byte == 0x80) return 0x80;
  if (byte == 0xA0) return 0xF8F0;
  if (byte >= 0xFD) return static_cast<wchar_t>(0xF8F1 + (byte - 0xFD));
  return 0;
}

wchar_t UnitOf(std::string_view character) {
  static Converter converter("UTF-16LE", "CP932");
  char unit[2];
  if (character.size() == 1) {
    const wchar_t kept = KeptByte(static_cast<unsigned char>(character[0]));
    if (kept != 0) return kept;
  }
  if (converter.Convert(character, unit) != sizeof unit) return kNoCharacter;
  return FromUtf16LeBytes({unit, sizeof unit})[0];
}

/// `allGood` tells whether there was nothing ill-formed.
std::wstring FromJapanese(std::string_view bytes, bool& allGood) {
  const std::lock_guard lock(g_guard);
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    // A NUL is never taken for the second half.
    const bool isPair = IsLeadByte(first) && bytes.size() > 1 && bytes[1] != '\0';
    const std::size_t size = isPair ? 2 : 1;
    if (first < 0x80) {
      text.push_back(static_cast<wchar_t>(first));
    } else {
      text.push_back(UnitOf(bytes.substr(0, size)));
      constexpr std::string_view kRealOne = "\x81\x45";
      if (text.back() == kNoCharacter && bytes.substr(0, size) != kRealOne) allGood = false;
    }
    bytes.remove_prefix(size);
  }
  return text;
}

std::string ToJapanese(std::wstring_view text, std::string_view substitute, bool& allGood) {
  static Converter converter("CP932", "UTF-16LE");
  const std::lock_guard lock(g_guard);
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t unit : text) {
    char character[4];
    if (unit >= 0 && unit < 0x80) {
      bytes.push_back(static_cast<char>(unit));
      continue;
    }
    std::size_t size = converter.Convert(ToUtf16LeBytes({&unit, 1}), character);
    for (int byte = 0x80; size == 0 && byte <= 0xFF; ++byte) {
      if (KeptByte(static_cast<unsigned char>(byte)) != unit) continue;
      character[0] = static_cast<char>(byte);
      size = 1;
    }
    if (size == 0) allGood = false;
    bytes += size == 0 ? substitute : std::string_view(character, size);
  }
  return bytes;
}

/// The result of a conversion into `target`, where 0 of `capacity` asks for the size alone.
template <typename Unit>
int Give(std::basic_string_view<Unit> result, Unit* target, int capacity) {
  const int size = static_cast<int>(result.size());
  if (capacity == 0) return size;
  const int fitting = std::min(size, capacity);
  result.copy(target, static_cast<std::size_t>(fitting));
  return fitting == size ? size : FailWith(ERROR_INSUFFICIENT_BUFFER);
}

/// A source of `size` units; all to the terminator and with it for a negative size. Empty, and the
/// last error, when the arguments are none.
template <typename Unit, typename Target>
std::basic_string_view<Unit> Source(const Unit* text, int size, const Target* target,
                                    int capacity) {
  const bool bad = text == nullptr || size == 0 || capacity < 0 ||
                   (capacity > 0 && target == nullptr) ||
                   static_cast<const void*>(text) == static_cast<const void*>(target);
  if (bad) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return {};
  }
  if (size > 0) return {text, static_cast<std::size_t>(size)};
  return {text, std::char_traits<Unit>::length(text) + 1};
}

bool IsJapanese(UINT codePage) {
  return codePage == CP_ACP || codePage == kJapanese;
}

int Utf8ToWide(std::string_view source, DWORD flags, LPWSTR text, int capacity) {
  if ((flags & ~MB_ERR_INVALID_CHARS) != 0) return FailWith(ERROR_INVALID_FLAGS);
  if (flags != 0 && ToUtf8(FromUtf8(source)) != source)
    return FailWith(ERROR_NO_UNICODE_TRANSLATION);
  const std::size_t size = DecodeUtf8(source, text, static_cast<std::size_t>(capacity));
  if (capacity > 0 && size > static_cast<std::size_t>(capacity))
    return FailWith(ERROR_INSUFFICIENT_BUFFER);
  return static_cast<int>(size);
}

int WideToUtf8(std::wstring_view source, DWORD flags, LPSTR bytes, int capacity) {
  if ((flags & ~WC_ERR_INVALID_CHARS) != 0) return FailWith(ERROR_INVALID_FLAGS);
  const std::string result = ToUtf8(source);
  if (flags != 0 && FromUtf8(result) != source) return FailWith(ERROR_NO_UNICODE_TRANSLATION);
  return Give<char>(result, bytes, capacity);
}

}  // namespace

std::wstring FromAnsi(std::string_view bytes) {
  bool ignored = true;
  return FromJapanese(bytes, ignored);
}

std::string ToAnsi(std::wstring_view text) {
  bool ignored = true;
  return ToJapanese(text, "?", ignored);
}

}  // namespace platform

using platform::FailWith;
using platform::IsToFail;

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int size, LPWSTR text,
                        int capacity) {
  if (IsToFail("MultiByteToWideChar")) return 0;
  const std::string_view source = platform::Source(bytes, size, text, capacity);
  if (source.empty()) return 0;
  if (codePage == CP_UTF8) return platform::Utf8ToWide(source, flags, text, capacity);
  if (!platform::IsJapanese(codePage)) return FailWith(ERROR_INVALID_PARAMETER);
  if ((flags & ~(MB_PRECOMPOSED | MB_ERR_INVALID_CHARS)) != 0) return FailWith(ERROR_INVALID_FLAGS);
  bool allGood = true;
  const std::wstring result = platform::FromJapanese(source, allGood);
  if (!allGood && (flags & MB_ERR_INVALID_CHARS) != 0)
    return FailWith(ERROR_NO_UNICODE_TRANSLATION);
  return platform::Give<wchar_t>(result, text, capacity);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR bytes,
                        int capacity, LPCSTR defaultChar, BOOL* usedDefault) {
  if (IsToFail("WideCharToMultiByte")) return 0;
  const std::wstring_view source = platform::Source(text, length, bytes, capacity);
  if (source.empty()) return 0;
  if (codePage == CP_UTF8) {
    if (defaultChar != nullptr || usedDefault != nullptr) return FailWith(ERROR_INVALID_PARAMETER);
    return platform::WideToUtf8(source, flags, bytes, capacity);
  }
  if (!platform::IsJapanese(codePage)) return FailWith(ERROR_INVALID_PARAMETER);
  if ((flags & ~WC_NO_BEST_FIT_CHARS) != 0) return FailWith(ERROR_INVALID_FLAGS);
  bool allGood = true;
  const std::string_view substitute = defaultChar == nullptr ? "?" : defaultChar;
  const std::string result = platform::ToJapanese(source, substitute, allGood);
  if (usedDefault != nullptr) *usedDefault = !allGood;
  return platform::Give<char>(result, bytes, capacity);
}
