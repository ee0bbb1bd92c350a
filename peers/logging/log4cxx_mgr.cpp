// A log line's text:
//
//   LEVEL NUMBER FUNCTION(LINE) TEXT
//   LEVEL NUMBER FUNCTION(LINE) TEXT (code CODE)
//   LEVEL NUMBER FUNCTION(LINE) LABEL=VALUE
//
// Each text stands as platform/visible_text.h shows it, so that one call stays one line. Lines
// below logging::LowestLevel are left out.

#include "logging/log4cxx_mgr.h"

#include <string>
#include <string_view>

#include "peers/logging/log_file.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace {

std::wstring Shown(const wchar_t* text) {
  return text == nullptr ? L"(null)" : platform::Visible(std::wstring_view(text));
}

/// `rest` gives the end of the line; it is asked only for a line that is written.
template <class Rest>
void Log(int level, int number, const wchar_t* function, int line, Rest rest) noexcept {
  try {
    if (level < logging::LowestLevel()) return;
    logging::Append(platform::ToUtf8(std::to_wstring(level) + L' ' + std::to_wstring(number) +
                                     L' ' + Shown(function) + L'(' + std::to_wstring(line) + L") " +
                                     rest()));
  } catch (...) {
    // A log is never the reason for a failure.
  }
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  Log(level, number, function, line, [&] { return Shown(text); });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  Log(level, number, function, line,
      [&] { return Shown(text) + L" (code " + std::to_wstring(code) + L')'; });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  Log(level, number, function, line, [&] { return Shown(label) + L'=' + Shown(value); });
}
