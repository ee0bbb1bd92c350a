// Exceptions of a component by another compiler, each kind a hundred times in one process.

#include "boundary/exports.h"
#include "tests/recorder/recorder.h"
#include "tests/support/causes.h"
#include "tests/support/holdings_windows.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

/// Where Windows begins its search for a handler.
const void* FirstFrame() {
  return reinterpret_cast<const NT_TIB*>(NtCurrentTeb())->ExceptionList;
}

void FailOnceThenPass(const wchar_t* kind) {
  TestMachine machine;
  RecorderSetState(L"throw", kind);
  Arrange("call 1 of Settings::Save throws");
  EXPECT_EQ(SigilSettingSetUseContentLog(true), -101);
  machine.ExpectNothingHeld();
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
}

TEST(Throws, LeaveNothingBehindAndLetTheNextCallPass) {
  if (!CanComponentThrow()) GTEST_SKIP() << "This component and the library have run-times apart.";
  const void* const frame = FirstFrame();
  FailOnceThenPass(L"0");
  const Holdings before;
  constexpr std::size_t kCount = 300;
  constexpr const wchar_t* kKinds[] = {L"0", L"1", L"2"};
  for (std::size_t i = 0; i < kCount; ++i) FailOnceThenPass(kKinds[i % std::size(kKinds)]);
  ExpectNothingGrew(before, 2 * kCount);
  EXPECT_EQ(FirstFrame(), frame);
}

}  // namespace
}  // namespace tests
