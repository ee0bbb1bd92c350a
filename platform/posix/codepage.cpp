#include "platform/codepage.h"

#include <iconv.h>

#include <cwchar>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/owner.h"
#include "platform/posix/ansi.h"
#include "platform/posix/handle.h"
#include "platform/utf.h"

namespace platform {

namespace {

constexpr wchar_t kNoCharacter = 0x30FB;  // Windows' character for bytes that 932 leaves free

// Windows writes the nearest character in place of one from U+00A1 to U+00FF that 932 lacks.
constexpr wchar_t kFirstOfNearest = 0xA1;
constexpr std::wstring_view kNearest =
    L"!¢£¤¥|§¨ca≪¬-R￣°±23´μ¶・，1o≫¼½¾¿"
    L"AAAAAAACEEEEIIIIDNOOOOO×OUUUUYTsaaaaaaaceeeeiiiidnooooo÷ouuuuyty";

// The C library has bytes for these, Windows has none.
constexpr std::wstring_view kOfTheLibraryAlone = L"\u2014\u2016\u203E\u2212\u301C";

/// One direction of the C library's conversion, a character at a time. Locked by its user.
class Converter {
 public:
  Converter(const char* to, const char* from) : m_descriptor(Open(to, from)) {}

  /// The number of bytes in `output`; 0 when there is no such character.
  template <std::size_t kCapacity>
  std::size_t Convert(std::string_view input, char (&output)[kCapacity]) {
    if (!m_descriptor) return 0;
    iconv(m_descriptor.Get(), nullptr, nullptr, nullptr, nullptr);
    char* from = const_cast<char*>(input.data());
    std::size_t left = input.size();
    char* to = output;
    std::size_t room = kCapacity;
    const std::size_t result = iconv(m_descriptor.Get(), &from, &left, &to, &room);
    return result == 0 && left == 0 ? kCapacity - room : 0;
  }

 private:
  static iconv_t Open(const char* to, const char* from) {
    const iconv_t descriptor = iconv_open(to, from);
    return descriptor == reinterpret_cast<iconv_t>(-1) ? nullptr : descriptor;
  }

  Owner<iconv_t, iconv_close> m_descriptor;
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

wchar_t NearestOf(wchar_t unit) {
  const auto place = static_cast<std::size_t>(unit - kFirstOfNearest);  // huge below the first
  if (place < kNearest.size()) return kNearest[place];
  if (unit == 0x3094) return 0x30F4;  // a hiragana that 932 has as katakana alone
  return kOfTheLibraryAlone.find(unit) == kOfTheLibraryAlone.npos ? unit : L'?';
}

/// The result of a conversion of `size` units into a target of `capacity`; 0 asks for the size
/// alone.
int ResultOf(std::size_t size, int capacity) {
  const bool isFitting = capacity == 0 || size <= static_cast<std::size_t>(capacity);
  return isFitting ? static_cast<int>(size) : FailWith(ERROR_INSUFFICIENT_BUFFER);
}

}  // namespace

std::wstring FromAnsi(std::string_view bytes) {
  const std::lock_guard lock(g_guard);
  std::wstring text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto first = static_cast<unsigned char>(bytes[0]);
    // A NUL is never taken for the second half.
    const bool isPair = IsLeadByte(first) && bytes.size() > 1 && bytes[1] != '\0';
    const std::size_t size = isPair ? 2 : 1;
    text.push_back(first < 0x80 ? static_cast<wchar_t>(first) : UnitOf(bytes.substr(0, size)));
    bytes.remove_prefix(size);
  }
  return text;
}

std::string ToAnsi(std::wstring_view text) {
  static Converter converter("CP932", "UTF-16LE");
  const std::lock_guard lock(g_guard);
  std::string bytes;
  bytes.reserve(text.size());
  for (const wchar_t each : text) {
    const wchar_t unit = NearestOf(each);
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
    bytes += size == 0 ? "?" : std::string_view(character, size);
  }
  return bytes;
}

}  // namespace platform

int MultiByteToWideChar(UINT codePage, DWORD, LPCSTR bytes, int size, LPWSTR text, int capacity) {
  const std::string_view source(bytes, static_cast<std::size_t>(size));
  const auto room = static_cast<std::size_t>(capacity);
  if (codePage == CP_UTF8)
    return platform::ResultOf(platform::DecodeUtf8(source, text, room), capacity);
  const std::wstring result = platform::FromAnsi(source);
  result.copy(text, room);
  return platform::ResultOf(result.size(), capacity);
}

int WideCharToMultiByte(UINT, DWORD, LPCWSTR text, int length, LPSTR bytes, int capacity, LPCSTR,
                        BOOL*) {
  if (platform::IsToFail("WideCharToMultiByte")) return 0;
  const std::size_t size = length < 0 ? std::wcslen(text) + 1 : static_cast<std::size_t>(length);
  const std::string result = platform::ToAnsi({text, size});
  result.copy(bytes, static_cast<std::size_t>(capacity));
  return platform::ResultOf(result.size(), capacity);
}
