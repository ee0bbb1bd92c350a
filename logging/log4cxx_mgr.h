#pragma once

// The logging component, `log4cxx.dll`: an outside library, of which these three forms are used.
// Each can be called at any time from any thread with no set-up, never throws and never blocks for
// long. The strings are read during the call only.
//
// On Windows the component comes from the platform's usual compiler. GCC and clang are told that
// compiler's names for the three forms, for calling them as for taking their place; log4cxx.def
// exports them. GCC hands a name to its assembler as it is written, so its names have quotes.
// 64-bit tests use the same names; no underscore precedes them there.

#ifdef _WIN32
#define LOG4CXX_MGR_API
#else
#define LOG4CXX_MGR_API __attribute__((visibility("default")))
#endif
#if defined(__MINGW32__) && defined(__clang__)
#define LOG4CXX_MGR_NAME(name) __asm__("_" name)
#elif defined(__MINGW64__)
#define LOG4CXX_MGR_NAME(name) __asm__("\"" name "\"")
#elif defined(__MINGW32__)
#define LOG4CXX_MGR_NAME(name) __asm__("\"_" name "\"")
#else
#define LOG4CXX_MGR_NAME(name)
#endif

class LOG4CXX_MGR_API Log4cxxMgr {
 public:
  /// `level` 0 (trace) to 5 (given up); `function` names the operation, and `number` the occasion
  /// in it; `line` is the source line of the call. A few numbers stand for several
  /// occasions; they are part of the contract and stay as they are.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line,
                           const wchar_t* text)
      LOG4CXX_MGR_NAME("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH0@Z");

  /// The same with a system error `code`, taken with GetLastError at the call.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                           const wchar_t* text)
      LOG4CXX_MGR_NAME("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WHH0@Z");

  /// A label and its value.
  static void LogOutDetail(int level, int number, const wchar_t* function, int line,
                           const wchar_t* label, const wchar_t* value)
      LOG4CXX_MGR_NAME("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH00@Z");
};
