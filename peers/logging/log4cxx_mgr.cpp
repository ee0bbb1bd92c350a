// A log line's text:
//
//   LEVEL NUMBER FUNCTION(LINE) TEXT
//   LEVEL NUMBER FUNCTION(LINE) TEXT (code CODE)
//   LEVEL NUMBER FUNCTION(LINE) LABEL=VALUE
//
// Control characters and line separators stand as \n, \r, \t or \uXXXX, so that one call stays one
// line and a terminal shows it as it is. Lines below the level in the environment variable
// SIGIL_LOG_LEVEL (0 when it is not set) are left out.

#define LOG4CXX_MGR_IMPLEMENTATION

#include "logging/log4cxx_mgr.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include "peers/logging/log_file.h"
#include "platform/utf.h"

namespace {

int LowestLevel() {
  const char* level = std::getenv("SIGIL_LOG_LEVEL");
  return level == nullptr ? 0 : std::atoi(level);
}

bool NeedsEscape(wchar_t unit) {
  return unit < 0x20 || (0x7F <= unit && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

void AppendEscaped(std::wstring& line, wchar_t unit) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  if (unit == L'\n' || unit == L'\r' || unit == L'\t') {
    line += L'\\';
    line += unit == L'\n' ? L'n' : unit == L'\r' ? L'r' : L't';
    return;
  }
  line += L"\\u";
  for (int shift = 12; shift >= 0; shift -= 4) line += kDigits[(unit >> shift) & 15];
}

std::wstring Escaped(const wchar_t* text) {
  if (text == nullptr) return L"(null)";
  std::wstring line;
  for (const wchar_t unit : std::wstring_view(text)) {
    if (NeedsEscape(unit))
      AppendEscaped(line, unit);
    else
      line += unit;
  }
  return line;
}

/// `rest` gives the end of the line; it is asked only for a line that is written.
template <class Rest>
void Log(int level, int number, const wchar_t* function, int line, Rest rest) noexcept {
  try {
    if (level < LowestLevel()) return;
    logging::Append(platform::ToUtf8(std::to_wstring(level) + L' ' + std::to_wstring(number) +
                                     L' ' + Escaped(function) + L'(' + std::to_wstring(line) +
                                     L") " + rest()));
  } catch (...) {
    // A log is never the reason for a failure.
  }
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  Log(level, number, function, line, [&] { return Escaped(text); });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  Log(level, number, function, line,
      [&] { return Escaped(text) + L" (code " + std::to_wstring(code) + L')'; });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  Log(level, number, function, line, [&] { return Escaped(label) + L'=' + Escaped(value); });
}
