#include "tests/recorder/recorder.h"

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "logging/log4cxx_mgr.h"

namespace {

struct Script {
  std::wstring call;
  unsigned nth;
  bool throws;
  std::int32_t result;
  unsigned seen = 0;
};

struct Recorder {
  std::deque<std::wstring> lines;
  std::vector<Script> scripts;
  std::map<std::wstring, std::wstring> state;
  std::map<std::wstring, unsigned> numbers;
  int live = 0;
};

std::atomic_flag theBusyFlag;

/// The recorder, for its taker alone. Taken for moments only: not every home's C++ library has a
/// mutex.
std::unique_ptr<Recorder, void (*)(Recorder*)> Take() {
  // Never destroyed: the test component may be unloaded at the very end of the process.
  static Recorder* const recorder = new Recorder;
  while (theBusyFlag.test_and_set()) {
  }
  return {recorder, [](Recorder*) { theBusyFlag.clear(); }};
}

void AddLog(int level, int number, const wchar_t* function, int line, const std::wstring& rest) {
  std::wstring text =
      std::to_wstring(level) + L" " + std::to_wstring(number) + L" " + function + L" " + rest;
  if (line <= 0) text += L" without its source line";
  RecorderAdd(text.c_str());
}

std::wstring Quoted(const wchar_t* text) {
  return L"\"" + std::wstring(text) + L"\"";
}

}  // namespace

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* text) {
  AddLog(level, number, function, line, Quoted(text));
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line, int code,
                              const wchar_t* text) {
  AddLog(level, number, function, line, L"code " + std::to_wstring(code) + L" " + Quoted(text));
}

void Log4cxxMgr::LogOutDetail(int level, int number, const wchar_t* function, int line,
                              const wchar_t* label, const wchar_t* value) {
  AddLog(level, number, function, line, Quoted(label) + L" " + Quoted(value));
}

extern "C" {

void RecorderReset() {
  const auto recorder = Take();
  recorder->lines.clear();
  recorder->scripts.clear();
  recorder->state.clear();
  recorder->numbers.clear();
}

void RecorderAdd(const wchar_t* line) {
  Take()->lines.emplace_back(line);
}

std::size_t RecorderCount() {
  return Take()->lines.size();
}

const wchar_t* RecorderLine(std::size_t index) {
  return Take()->lines.at(index).c_str();
}

bool RecorderCall(const wchar_t* operation, const wchar_t* line, std::int32_t* result) {
  const auto recorder = Take();
  recorder->lines.emplace_back(line);
  bool returns = true;
  for (Script& script : recorder->scripts) {
    if (script.call != operation && script.call != line) continue;
    ++script.seen;
    if (script.nth != 0 && script.nth != script.seen) continue;
    returns = !script.throws;
    *result = script.result;
  }
  return returns;
}

void RecorderScript(const wchar_t* call, unsigned nth, std::int32_t result) {
  Take()->scripts.push_back({call, nth, false, result});
}

void RecorderScriptThrow(const wchar_t* call, unsigned nth) {
  Take()->scripts.push_back({call, nth, true, 0});
}

void RecorderSetState(const wchar_t* name, const wchar_t* value) {
  Take()->state[name] = value;
}

const wchar_t* RecorderState(const wchar_t* name) {
  return Take()->state[name].c_str();
}

unsigned RecorderNextNumber(const wchar_t* kind) {
  return ++Take()->numbers[kind];
}

int RecorderLive(int change) {
  return Take()->live += change;
}
}
