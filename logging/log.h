#pragma once

// How the system logs. Each file keeps its messages together at its top, as constants, and logs
// them by name with their values. Nothing here throws: the exports log their last line when nobody
// is left to catch.

#include <new>
#include <source_location>

#include "logging/log4cxx_mgr.h"
#include "platform/mfc.h"

struct LogMessage {
  int level;
  int number;
  const wchar_t* function;
  const wchar_t* text;
};

/// A message together with the source line that logs it.
struct LogCall {
  /// Implicit, so that Log(kMessage) records the line of its caller.
  LogCall(const LogMessage& message, std::source_location where = std::source_location::current())
      : message(message), line(static_cast<int>(where.line())) {}

  const LogMessage& message;
  int line;
};

inline void Log(const LogCall& call) {
  Log4cxxMgr::LogOutDetail(call.message.level, call.message.number, call.message.function,
                           call.line, call.message.text);
}

/// Logs the message with `values` in place of its conversions. When memory ends, the line shows the
/// conversions instead, because a line without its values still names the occasion.
template <typename... Values>
requires(sizeof...(Values) > 0) void Log(const LogCall& call, const Values&... values) {
  CString text;
  try {
    text.Format(call.message.text, values...);
  } catch (const std::bad_alloc&) {
    Log(call);
    return;
  }
  Log4cxxMgr::LogOutDetail(call.message.level, call.message.number, call.message.function,
                           call.line, text);
}

/// Logs the message with the thread's last error as its code.
inline void LogWithLastError(const LogCall& call) {
  Log4cxxMgr::LogOutDetail(call.message.level, call.message.number, call.message.function,
                           call.line, static_cast<int>(GetLastError()), call.message.text);
}

/// Logs the message's text as the label of `value`.
inline void LogLabelled(const LogCall& call, const wchar_t* value) {
  Log4cxxMgr::LogOutDetail(call.message.level, call.message.number, call.message.function,
                           call.line, call.message.text, value);
}
