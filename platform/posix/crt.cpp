#include "platform/crt.h"

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <limits>
#include <string>

#include "platform/owner.h"
#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"

namespace {

constexpr int kNoDigit = 36;

/// The value of a digit or ASCII letter, kNoDigit for anything else.
int DigitOf(wchar_t character) {
  // Where the decimal digits of the scripts begin.
  constexpr std::array<wchar_t, 18> kZeros = {0x0030, 0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66,
                                              0x0AE6, 0x0B66, 0x0C66, 0x0CE6, 0x0D66, 0x0E50,
                                              0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
  const auto next = std::upper_bound(kZeros.begin(), kZeros.end(), character);
  if (next != kZeros.begin() && character - *std::prev(next) < 10)
    return character - *std::prev(next);
  if (character >= L'a' && character <= L'z') return character - L'a' + 10;
  if (character >= L'A' && character <= L'Z') return character - L'A' + 10;
  return kNoDigit;
}

/// Takes a sign off the front; true for a minus.
bool TakeSign(const wchar_t*& text) {
  const bool minus = *text == L'-';
  if (minus || *text == L'+') ++text;
  return minus;
}

bool IsAsciiDigit(wchar_t character) {
  return character >= L'0' && character <= L'9';
}

void TakeDigits(const wchar_t*& text, std::string& number) {
  while (IsAsciiDigit(*text)) number.push_back(static_cast<char>(*text++));
}

/// The number as the C library reads it: digits, point and an exponent marked by `e`.
std::string TakeReal(const wchar_t* text) {
  std::string number;
  while (crt::iswspace(*text)) ++text;
  if (TakeSign(text)) number = "-";
  const std::size_t sign = number.size();
  TakeDigits(text, number);
  if (*text == L'.') {
    number.push_back('.');
    TakeDigits(++text, number);
  }
  if (number.size() == sign || number.substr(sign) == ".") return "0";
  if (*text == L'\0' || std::wstring_view(L"eEdD").find(*text) == std::wstring_view::npos)
    return number;
  std::string exponent = "e";
  if (TakeSign(++text)) exponent += '-';
  const std::size_t start = exponent.size();
  TakeDigits(text, exponent);
  return exponent.size() == start ? number : number + exponent;
}

}  // namespace

namespace crt {

LONG wcstol(const wchar_t* text, wchar_t** end, int base) {
  if (end != nullptr) *end = const_cast<wchar_t*>(text);
  while (iswspace(*text)) ++text;
  const bool minus = TakeSign(text);
  const bool hasPrefix = DigitOf(text[0]) == 0 && (text[1] == L'x' || text[1] == L'X');
  if (base == 16 && hasPrefix) text += 2;

  using Limits = std::numeric_limits<LONG>;
  const std::int64_t limit = minus ? -std::int64_t{Limits::min()} : Limits::max();
  std::int64_t value = 0;
  bool overflow = false;
  for (int digit; (digit = DigitOf(*text)) < base; ++text) {
    value = value * base + digit;
    overflow = overflow || value > limit;
    value = std::min(value, limit);
    if (end != nullptr) *end = const_cast<wchar_t*>(text + 1);
  }
  if (overflow) errno = ERANGE;
  return static_cast<LONG>(minus ? -value : value);
}

int iswspace(wchar_t character) {
  return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 ||
         character == 0xA0 || character == 0x1680 || (character >= 0x2000 && character <= 0x200A) ||
         character == 0x2028 || character == 0x2029 || character == 0x202F || character == 0x205F ||
         character == 0x3000;
}

}  // namespace crt

int _wtoi(const wchar_t* text) {
  return text == nullptr ? 0 : crt::wcstol(text, nullptr, 10);
}

double _wtof(const wchar_t* text) {
  if (text == nullptr) return 0.0;
  static const Owner<locale_t, freelocale> plain(newlocale(LC_ALL_MASK, "C", nullptr));
  return strtod_l(TakeReal(text).c_str(), nullptr, plain.Get());
}

errno_t _wfopen_s(std::FILE** file, const wchar_t* path, const wchar_t*) {
  *file = nullptr;
  if (platform::TakeFault("_wfopen_s")) return EACCES;
  *file = platform::OpenToRead(platform::HostPath(path).c_str());
  return *file == nullptr ? errno : 0;
}
