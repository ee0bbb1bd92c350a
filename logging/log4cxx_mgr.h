#pragma once

// The logging component, `log4cxx.dll`: an outside library, of which these three forms are used.
// Each can be called at any time from any thread with no set-up, never throws and never blocks for
// long. The strings are read during the call only.

#if defined(_WIN32)
#define LOG4CXX_MGR_API __declspec(dllimport)
#else
#define LOG4CXX_MGR_API __attribute__((visibility("default")))
#endif
#ifdef LOG4CXX_MGR_IMPLEMENTATION
#undef LOG4CXX_MGR_API
#if defined(_WIN32)
#define LOG4CXX_MGR_API __declspec(dllexport)
#else
#define LOG4CXX_MGR_API __attribute__((visibility("default")))
#endif
#endif

class LOG4CXX_MGR_API Log4cxxMgr {
 public:
  /// `level` 0 (trace) to 5 (given up), `number` tells the message, `function` names the operation,
  /// `line` is the source line of the call.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line,
                           const wchar_t* text);

  /// The same with a system error `code`, taken with GetLastError at the call.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                           const wchar_t* text);

  /// A label and its value.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line,
                           const wchar_t* label, const wchar_t* value);
};
