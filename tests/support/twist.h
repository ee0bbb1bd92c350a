#pragma once

// What is another way than usual in a test: faults of the machine, and what the component answers
// and holds.

#include <vector>

#include "platform/faults.h"
#include "tests/recorder/recorder.h"

namespace tests {

struct Twist {
  enum { kFault, kResult, kThrow, kState } kind;
  const char* operation;
  const wchar_t* call;
  unsigned nth;
  std::int32_t value;
  const wchar_t* state;
};

/// Every call of `operation` after the good ones fails.
inline Twist Fault(const char* operation, unsigned goodCalls = 0,
                   DWORD error = ERROR_ACCESS_DENIED) {
  return {Twist::kFault, operation, nullptr, goodCalls, static_cast<std::int32_t>(error), L""};
}

/// The `nth` call (0: every one) gives `result`.
inline Twist Gives(const wchar_t* call, unsigned nth, std::int32_t result) {
  return {Twist::kResult, nullptr, call, nth, result, L""};
}

inline Twist Throws(const wchar_t* call, unsigned nth = 1) {
  return {Twist::kThrow, nullptr, call, nth, 0, L""};
}

/// The component holds `value` under `name`.
inline Twist Holds(const wchar_t* name, const wchar_t* value) {
  return {Twist::kState, nullptr, name, 0, 0, value};
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

/// False where this home has neither faults nor exceptions between modules and one is needed.
inline bool Apply(const Twists& twists) {
  for (const Twist& twist : twists) {
    const bool portable = twist.kind == Twist::kResult || twist.kind == Twist::kState;
    if (!portable && !platform::kHasFaults) return false;
    switch (twist.kind) {
      case Twist::kFault:
        platform::SetFault(twist.operation, twist.nth, static_cast<DWORD>(twist.value));
        break;
      case Twist::kResult:
        RecorderScript(twist.call, twist.nth, twist.value);
        break;
      case Twist::kThrow:
        RecorderScriptThrow(twist.call, twist.nth);
        break;
      case Twist::kState:
        RecorderSetState(twist.call, twist.state);
        break;
    }
  }
  return true;
}

}  // namespace tests
