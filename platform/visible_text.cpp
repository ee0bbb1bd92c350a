#include "platform/visible_text.h"

#include "platform/utf.h"

namespace platform {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

/// The controls of C0 and C1 with DEL, the separators of lines and paragraphs, the marks of
/// annotations, and Unicode's Default_Ignorable_Code_Point without the variation selectors, which
/// Japanese names need.
constexpr Range kControls[] = {
    {0x00, 0x1F},       {0x7F, 0x9F},       {0xAD, 0xAD},       {0x034F, 0x034F},  {0x061C, 0x061C},
    {0x115F, 0x1160},   {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},  {0x2028, 0x202E},
    {0x2060, 0x206F},   {0x3164, 0x3164},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},  {0xFFF0, 0xFFFB},
    {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE00FF}, {0xE01F0, 0xE0FFF}};

bool IsControl(char32_t character) {
  if (character >= 0x20 && character < 0x7F) return false;  // most of all text
  for (const Range& range : kControls)
    if (range.first <= character && character <= range.last) return true;
  return false;
}

void AppendEscaped(std::wstring& line, char32_t unit) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  line += L'\\';
  if (unit == U'\n' || unit == U'\r' || unit == U'\t') {
    line += unit == U'\n' ? L'n' : unit == U'\r' ? L'r' : L't';
    return;
  }
  line += L'u';
  for (int shift = unit > 0xFFFF ? 20 : 12; shift >= 0; shift -= 4)
    line += kDigits[(unit >> shift) & 15];
}

}  // namespace

std::wstring Visible(std::wstring_view text) {
  std::wstring line;
  line.reserve(text.size());
  while (!text.empty()) {
    const std::wstring_view before = text;
    const bool isControl = IsControl(TakeCodePoint(text));
    for (const wchar_t unit : before.substr(0, before.size() - text.size()))
      isControl ? AppendEscaped(line, static_cast<char32_t>(unit)) : line.push_back(unit);
  }
  return line;
}

std::string Visible(std::string_view text) {
  return ToUtf8(Visible(FromUtf8(text)));
}

}  // namespace platform
