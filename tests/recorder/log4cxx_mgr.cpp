// The logging component of the tests, which tells the recorder.

#include "logging/log4cxx_mgr.h"

#include "tests/recorder/recorder.h"

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  const RecorderPart part = {RecorderPart::kQuoted, text};
  RecorderAddLog(level, number, function, line, &part, 1);
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  const RecorderPart parts[] = {{RecorderPart::kWord, L"code"},
                                {RecorderPart::kWhole, nullptr, static_cast<double>(code)},
                                {RecorderPart::kQuoted, text}};
  RecorderAddLog(level, number, function, line, parts, 3);
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  const RecorderPart parts[] = {{RecorderPart::kQuoted, label}, {RecorderPart::kQuoted, value}};
  RecorderAddLog(level, number, function, line, parts, 2);
}
