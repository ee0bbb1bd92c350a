#pragma once

// What is another way than usual in a test: faults of the machine, and what the component answers
// and holds.

#include <functional>
#include <vector>

#include "platform/faults.h"
#include "tests/recorder/recorder.h"

namespace tests {

struct Twist {
  bool everywhere;  ///< Needs neither faults nor exceptions that pass from module to module.
  std::function<void()> apply;
};

/// Every call of `operation` after the good ones fails.
inline Twist Fault(const char* operation, unsigned goodCalls = 0,
                   DWORD error = ERROR_ACCESS_DENIED) {
  return {false, [=] { platform::SetFault(operation, goodCalls, error); }};
}

/// The `nth` call (0: every one) gives `result`.
inline Twist Gives(const wchar_t* call, unsigned nth, std::int32_t result) {
  return {true, [=] { RecorderScript(call, nth, result); }};
}

inline Twist Throws(const wchar_t* call, unsigned nth = 1) {
  return {false, [=] { RecorderScriptThrow(call, nth); }};
}

/// The component holds `value` under `name`.
inline Twist Holds(const wchar_t* name, const wchar_t* value) {
  return {true, [=] { RecorderSetState(name, value); }};
}

class Twists : public std::vector<Twist> {
 public:
  Twists() = default;
  Twists(const Twist& one) : vector{one} {}
};

inline Twists operator+(Twists all, const Twist& one) {
  all.push_back(one);
  return all;
}

/// False where this home cannot have one of them.
inline bool Apply(const Twists& twists) {
  for (const Twist& twist : twists) {
    if (!twist.everywhere && !platform::kHasFaults) return false;
    twist.apply();
  }
  return true;
}

}  // namespace tests
