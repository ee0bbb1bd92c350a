// A logging component by another compiler. What it is told it tells the recorder, which has a DLL
// of its own here; and the tests, which look for the recorder in the logging component, are sent
// on.

#include "logging/log4cxx_mgr.h"
#include "tests/foreign/line.h"
#include "tests/recorder/recorder.h"

#pragma comment(linker, "/export:RecorderAdd=recorder.RecorderAdd")
#pragma comment(linker, "/export:RecorderCount=recorder.RecorderCount")
#pragma comment(linker, "/export:RecorderLine=recorder.RecorderLine")
#pragma comment(linker, "/export:RecorderLive=recorder.RecorderLive")
#pragma comment(linker, "/export:RecorderReset=recorder.RecorderReset")
#pragma comment(linker, "/export:RecorderScript=recorder.RecorderScript")
#pragma comment(linker, "/export:RecorderScriptThrow=recorder.RecorderScriptThrow")
#pragma comment(linker, "/export:RecorderSetState=recorder.RecorderSetState")

namespace {

foreign::Line Head(int level, int number, const wchar_t* function, int line) {
  foreign::Line head;
  head << level << L" " << number << L" " << function << L" ";
  if (line <= 0) head << L"without its source line ";
  return head;
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  RecorderAdd((Head(level, number, function, line) << L"\"" << text << L"\"").Text());
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  RecorderAdd(
      (Head(level, number, function, line) << L"code " << code << L" \"" << text << L"\"").Text());
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  RecorderAdd(
      (Head(level, number, function, line) << L"\"" << label << L"\" \"" << value << L"\"").Text());
}
