#include "platform/visible_text.h"

#include "platform/utf.h"

namespace platform {
namespace {

struct Range {
  wchar_t first;
  wchar_t last;
};

constexpr Range kControls[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x2028, 0x2029},
                               {0x202A, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF}};

void AppendEscaped(std::wstring& line, wchar_t unit) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  line += L'\\';
  if (unit == L'\n' || unit == L'\r' || unit == L'\t') {
    line += unit == L'\n' ? L'n' : unit == L'\r' ? L'r' : L't';
    return;
  }
  line += L'u';
  for (int shift = 12; shift >= 0; shift -= 4) line += kDigits[(unit >> shift) & 15];
}

}  // namespace

bool IsControl(wchar_t unit) {
  for (const Range& range : kControls)
    if (range.first <= unit && unit <= range.last) return true;
  return false;
}

std::wstring Visible(std::wstring_view text) {
  std::wstring line;
  line.reserve(text.size());
  for (const wchar_t unit : text) {
    if (IsControl(unit))
      AppendEscaped(line, unit);
    else
      line += unit;
  }
  return line;
}

std::string Visible(std::string_view text) {
  return ToUtf8(Visible(FromUtf8(text)));
}

}  // namespace platform
