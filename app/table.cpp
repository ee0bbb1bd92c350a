#include "app/table.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cstdio>
#include <ostream>

#include "platform/utf.h"

namespace app {
namespace {

/// The C library's knowledge of all characters, whatever the process's locale.
class UnicodeLocale {
 public:
  UnicodeLocale() : m_before(uselocale(Get())) {}
  ~UnicodeLocale() { uselocale(m_before); }
  UnicodeLocale(const UnicodeLocale&) = delete;
  UnicodeLocale& operator=(const UnicodeLocale&) = delete;

 private:
  static locale_t Get() {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return unicode;  // without it the current one stays
  }

  locale_t m_before;
};

/// Whole characters, one in each wchar_t.
std::wstring Characters(std::string_view text) {
  std::wstring characters;
  for (const wchar_t unit : platform::FromUtf8(text)) {
    if (unit >= 0xDC00 && unit <= 0xDFFF)
      characters.back() = 0x10000 + ((characters.back() - 0xD800) << 10) + (unit - 0xDC00);
    else
      characters += unit;
  }
  return characters;
}

std::size_t Width(wchar_t character) {
  const int width = wcwidth(character);
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

std::size_t Width(std::wstring_view characters) {
  std::size_t width = 0;
  for (const wchar_t character : characters) width += Width(character);
  return width;
}

bool IsControl(wchar_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
         (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

std::wstring Escaped(wchar_t character) {
  if (character == L'\n') return L"\\n";
  if (character == L'\t') return L"\\t";
  wchar_t text[16];
  swprintf(text, std::size(text), L"\\u%04X", static_cast<unsigned>(character));
  return text;
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
  const UnicodeLocale locale;
  return Width(Characters(text));
}

std::string OneLine(std::string_view text, std::size_t width) {
  const UnicodeLocale locale;
  std::wstring line;
  for (const wchar_t character : Characters(text))
    line += IsControl(character) ? Escaped(character) : std::wstring(1, character);
  if (Width(line) > width) {
    std::size_t end = 0;
    for (std::size_t left = width - 1; Width(line[end]) <= left; ++end) left -= Width(line[end]);
    line.resize(end);
    line += L'…';
  }
  return platform::ToUtf8(line);
}

void PrintTable(std::ostream& out, const std::vector<Row>& rows, std::string_view indent) {
  std::vector<std::size_t> widths;
  for (const Row& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  for (const Row& row : rows) {
    std::string line(indent);
    for (std::size_t i = 0; i < row.size(); ++i)
      line += row[i] + std::string(widths[i] - DisplayWidth(row[i]) + 2, ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << "\n";
  }
}

}  // namespace app
