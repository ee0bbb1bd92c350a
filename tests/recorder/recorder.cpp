#include "tests/recorder/recorder.h"

#include <atomic>
#include <charconv>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "peers/logging/log_watch.h"

namespace {

struct Script {
  std::wstring call;
  unsigned nth;
  bool throws;
  std::int32_t result;
  unsigned seen = 0;
};

struct Recorder {
  std::set<std::wstring> texts;  // All that were given, which are few different ones.
  std::vector<const wchar_t*> lines;
  std::vector<Script> scripts;
  std::map<std::wstring, std::wstring> state;
  std::map<std::wstring, unsigned> numbers;
  int live = 0;

  const wchar_t* Keep(const std::wstring& text) { return texts.insert(text).first->c_str(); }
};

std::atomic_flag theBusyFlag;
std::atomic<int> theWork = 0;

/// Marks the time in which the recorder allocates.
struct Work {
  Work() { ++theWork; }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { --theWork; }
};
std::atomic<logging::Watcher> theWatcher;

/// The recorder, for its taker alone. Taken for moments only: not every home's C++ library has a
/// mutex.
std::unique_ptr<Recorder, void (*)(Recorder*)> Take() {
  // Never destroyed: the test component may be unloaded at the very end of the process.
  static Recorder* const recorder = new Recorder;
  while (theBusyFlag.test_and_set()) {
  }
  return {recorder, [](Recorder*) { theBusyFlag.clear(); }};
}

std::wstring Shown(double number) {
  char digits[32];
  const std::string text(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
  const bool isWhole = text.find_first_not_of("-0123456789") == text.npos;
  return std::wstring(text.begin(), text.end()) + (isWhole ? L".0" : L"");
}

std::wstring Shown(const RecorderPart& part) {
  if (part.kind == RecorderPart::kWhole)
    return std::to_wstring(static_cast<long long>(part.number));
  if (part.kind == RecorderPart::kReal) return Shown(part.number);
  if (part.text == nullptr) return L"null";
  return part.kind == RecorderPart::kWord ? part.text : L"\"" + std::wstring(part.text) + L"\"";
}

std::wstring Joined(const RecorderPart* parts, std::size_t count, const wchar_t* between) {
  std::wstring text;
  for (std::size_t i = 0; i < count; ++i) text += (i == 0 ? L"" : between) + Shown(parts[i]);
  return text;
}

/// What a watcher gets of a log line's parts: a text with its code, or a label with its value.
std::wstring Told(const RecorderPart* parts, std::size_t count) {
  const std::wstring last = parts[count - 1].text;
  if (count == 2) return parts[0].text + (L"=" + last);
  return count == 1 ? last : last + L" (code " + Shown(parts[1]) + L")";
}

}  // namespace

extern "C" {

void SigilWatchLog(logging::Watcher watcher) {
  theWatcher = watcher;
}

bool RecorderIsWorking() {
  return theWork > 0;
}

void RecorderReset() {
  const auto recorder = Take();
  recorder->lines.clear();
  recorder->scripts.clear();
  recorder->state.clear();
  recorder->numbers.clear();
}

const wchar_t* RecorderText(const RecorderPart* parts, std::size_t count, const wchar_t* between) {
  const Work work;
  return Take()->Keep(Joined(parts, count, between));
}

void RecorderAdd(const wchar_t* line) {
  const Work work;
  const auto recorder = Take();
  recorder->lines.push_back(recorder->Keep(line));
}

void RecorderAddLog(int level, int number, const wchar_t* function, int line,
                    const RecorderPart* parts, std::size_t count) {
  const Work work;
  if (const logging::Watcher watcher = theWatcher)
    watcher(level, number, function, Told(parts, count).c_str());
  std::wostringstream text;
  text << level << L' ' << number << L' ' << function << L' ' << Joined(parts, count, L" ");
  if (line <= 0) text << L" without its source line";
  RecorderAdd(text.str().c_str());
}

std::size_t RecorderCount() {
  return Take()->lines.size();
}

const wchar_t* RecorderLine(std::size_t index) {
  return Take()->lines.at(index);
}

bool RecorderCall(const wchar_t* kind, const wchar_t* name, const char* operation,
                  const RecorderPart* arguments, std::size_t count, std::int32_t* result) {
  const Work work;
  const std::wstring plain(operation, operation + std::strlen(operation));
  const std::wstring before = *kind == L'\0' ? L"" : L"::";
  const std::wstring shownName = *name == L'\0' ? L"" : L"[" + std::wstring(name) + L"]";
  const std::wstring call = kind + before + plain;
  const std::wstring line =
      kind + shownName + before + plain + L"(" + Joined(arguments, count, L", ") + L")";
  const auto recorder = Take();
  recorder->lines.push_back(recorder->Keep(line));
  bool returns = true;
  for (Script& script : recorder->scripts) {
    if (script.call != call && script.call != line) continue;
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
  const Work work;
  const auto recorder = Take();
  return recorder->Keep(recorder->state[name]);
}

std::int32_t RecorderStateNumber(const wchar_t* name) {
  return static_cast<std::int32_t>(std::wcstol(RecorderState(name), nullptr, 10));
}

const wchar_t* RecorderStateLine(const wchar_t* name, int index) {
  const Work work;
  std::wistringstream lines(RecorderState(name));
  std::wstring line;
  while (std::getline(lines, line) && index-- > 0) line.clear();
  return Take()->Keep(line);
}

unsigned RecorderNextNumber(const wchar_t* kind) {
  const Work work;
  return ++Take()->numbers[kind];
}

int RecorderLive(int change) {
  return Take()->live += change;
}
}
