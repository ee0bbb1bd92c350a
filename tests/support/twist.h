#pragma once

// What is another way than usual in a test: faults of the machine, and what the component answers
// and holds.

#include <functional>
#include <vector>

#include "platform/faults.h"
#include "tests/recorder/recorder.h"
#include "tests/support/test_machine.h"

namespace tests {

struct Twist {
  bool isPossible;  ///< In this home, with this component.
  std::function<void()> apply;
};

/// Every call of `operation` after the good ones fails.
inline Twist Fault(const char* operation, unsigned goodCalls = 0,
                   DWORD error = ERROR_ACCESS_DENIED) {
  return {platform::kHasFaults, [=] { platform::SetFault(operation, goodCalls, error); }};
}

/// The `nth` call (0: every one) gives `result`.
inline Twist Gives(const wchar_t* call, unsigned nth, std::int32_t result) {
  return {true, [=] { RecorderScript(call, nth, result); }};
}

inline Twist Throws(const wchar_t* call, unsigned nth = 1) {
  return {CanComponentThrow(), [=] { RecorderScriptThrow(call, nth); }};
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

/// False where one of them is not possible.
inline bool Apply(const Twists& twists) {
  for (const Twist& twist : twists) {
    if (!twist.isPossible) return false;
    twist.apply();
  }
  return true;
}

}  // namespace tests
