#define LOG4CXX_MGR_IMPLEMENTATION

#include "tests/recorder/recorder.h"

#include <atomic>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "boundary/log4cxx_mgr.h"

namespace {

struct Script {
  std::wstring call;
  unsigned nth;
  unsigned seen;
  RecorderAnswer answer;
  std::int32_t result;
};

struct Recorder {
  std::atomic_flag busy;
  std::deque<std::wstring> lines;
  std::vector<Script> scripts;
  std::map<std::wstring, std::wstring> state;
  std::map<std::wstring, unsigned> numbers;
  std::map<std::wstring, int> live;
};

// Never destroyed: the test component may be unloaded at the very end of the process.
Recorder& TheRecorder() {
  static Recorder* recorder = new Recorder;
  return *recorder;
}

// Held for moments only, and not every home's C++ library has a mutex.
class Turn {
 public:
  explicit Turn(std::atomic_flag& busy) : m_busy(busy) {
    while (m_busy.test_and_set(std::memory_order_acquire)) {
    }
  }
  ~Turn() { m_busy.clear(std::memory_order_release); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  std::atomic_flag& m_busy;
};

template <class Action>
auto Locked(Action action) {
  Recorder& recorder = TheRecorder();
  const Turn turn(recorder.busy);
  return action(recorder);
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
  Locked([](Recorder& recorder) {
    recorder.lines.clear();
    recorder.scripts.clear();
    recorder.state.clear();
    recorder.numbers.clear();
  });
}

void RecorderAdd(const wchar_t* line) {
  Locked([&](Recorder& recorder) { recorder.lines.emplace_back(line); });
}

std::size_t RecorderCount() {
  return Locked([](Recorder& recorder) { return recorder.lines.size(); });
}

const wchar_t* RecorderLine(std::size_t index) {
  return Locked([&](Recorder& recorder) { return recorder.lines.at(index).c_str(); });
}

int RecorderCall(const wchar_t* operation, const wchar_t* line, std::int32_t* result) {
  return Locked([&](Recorder& recorder) {
    recorder.lines.emplace_back(line);
    RecorderAnswer answer = kRecorderUnscripted;
    for (Script& script : recorder.scripts) {
      if (script.call != operation && script.call != line) continue;
      ++script.seen;
      if (script.nth != 0 && script.nth != script.seen) continue;
      answer = script.answer;
      *result = script.result;
    }
    return answer;
  });
}

void RecorderScript(const wchar_t* call, unsigned nth, std::int32_t result) {
  Locked([&](Recorder& recorder) {
    recorder.scripts.push_back({call, nth, 0, kRecorderResult, result});
  });
}

void RecorderScriptThrow(const wchar_t* call, unsigned nth) {
  Locked([&](Recorder& recorder) {
    recorder.scripts.push_back({call, nth, 0, kRecorderThrow, 0});
  });
}

void RecorderSetState(const wchar_t* name, const wchar_t* value) {
  Locked([&](Recorder& recorder) { recorder.state[name] = value; });
}

const wchar_t* RecorderState(const wchar_t* name) {
  return Locked([&](Recorder& recorder) { return recorder.state[name].c_str(); });
}

unsigned RecorderNextNumber(const wchar_t* kind) {
  return Locked([&](Recorder& recorder) { return ++recorder.numbers[kind]; });
}

void RecorderChangeLive(const wchar_t* kind, int by) {
  Locked([&](Recorder& recorder) { recorder.live[kind] += by; });
}

int RecorderLive(const wchar_t* kind) {
  return Locked([&](Recorder& recorder) { return recorder.live[kind]; });
}
}
