// A log line's text:
//
//   LEVEL NUMBER FUNCTION(LINE) TEXT
//   LEVEL NUMBER FUNCTION(LINE) TEXT (code CODE)
//   LEVEL NUMBER FUNCTION(LINE) LABEL=VALUE
//
// Texts are made visible (platform/visible_text.h), so that one call is one line. Lines below
// logging::LowestLevel are not written.

#include "logging/log4cxx_mgr.h"

#include <atomic>
#include <string>
#include <string_view>

#include "peers/logging/log_file.h"
#include "peers/logging/log_watch.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace {

std::atomic<logging::Watcher> g_watcher = nullptr;

const wchar_t* OrNull(const wchar_t* text) {
  return text == nullptr ? L"(null)" : text;
}

/// `rest` returns the text; it is called only for a message that is watched or written.
template <class Rest>
void Log(int level, int number, const wchar_t* function, int line, Rest rest) noexcept {
  try {
    const logging::Watcher watcher = g_watcher;
    const bool isWritten = level >= logging::LowestLevel();
    if (watcher == nullptr && !isWritten) return;
    const std::wstring text = rest();
    if (watcher != nullptr) watcher(level, number, OrNull(function), text.c_str());
    if (!isWritten) return;
    logging::Append(platform::ToUtf8(std::to_wstring(level) + L' ' + std::to_wstring(number) +
                                     L' ' + platform::Visible(std::wstring_view(OrNull(function))) +
                                     L'(' + std::to_wstring(line) + L") " +
                                     platform::Visible(text)));
  } catch (...) {
    // A failing log must not make a pass fail.
  }
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  Log(level, number, function, line, [&] { return std::wstring(OrNull(text)); });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  Log(level, number, function, line,
      [&] { return std::wstring(OrNull(text)) + L" (code " + std::to_wstring(code) + L')'; });
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  Log(level, number, function, line,
      [&] { return std::wstring(OrNull(label)) + L'=' + OrNull(value); });
}

void SigilWatchLog(logging::Watcher watcher) {
  g_watcher = watcher;
}
