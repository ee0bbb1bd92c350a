// A logging component by another compiler. What it is told it tells the recorder, which has a DLL
// of its own here; and the tests, which look for the recorder in the logging component, are sent
// on.

#include <string>

#include "logging/log4cxx_mgr.h"
#include "tests/foreign/heap.h"
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

std::wstring Head(int level, int number, const wchar_t* function, int line) {
  const wchar_t* const missing = line <= 0 ? L"without its source line " : L"";
  return std::to_wstring(level) + L" " + std::to_wstring(number) + L" " + function + L" " + missing;
}

std::wstring Quoted(const wchar_t* text) {
  return std::wstring(L"\"") + text + L"\"";
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  RecorderAdd((Head(level, number, function, line) + Quoted(text)).c_str());
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  const std::wstring shown = L"code " + std::to_wstring(code) + L" " + Quoted(text);
  RecorderAdd((Head(level, number, function, line) + shown).c_str());
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  const std::wstring shown = Quoted(label) + L" " + Quoted(value);
  RecorderAdd((Head(level, number, function, line) + shown).c_str());
}
