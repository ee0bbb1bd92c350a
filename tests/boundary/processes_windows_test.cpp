// Two processes on one machine. The other is this program again, running the disabled test below.

#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

HANDLE StartOther() {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(program) +
                         L"\" --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_Other";
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &process));
  CloseHandle(process.hThread);
  return process.hProcess;
}

HANDLE Ready() {
  return CreateEventW(nullptr, TRUE, FALSE, L"ready");
}

TEST(Processes, DISABLED_Other) {
  SetEvent(Ready());
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
}

TEST(Processes, OnePassWaitsForTheOther) {
  TestMachine machine;
  const HANDLE ready = Ready();
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Global\\MIMOSA_HLE_SIGIL_SETTING");
  ASSERT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
  const HANDLE other = StartOther();
  WaitForSingleObject(ready, INFINITE);
  constexpr DWORD kPassesEnd = 300;  // Milliseconds; a slow machine makes the look weaker, no more.
  EXPECT_EQ(WaitForSingleObject(other, kPassesEnd), static_cast<DWORD>(WAIT_TIMEOUT));
  ReleaseMutex(mutex);
  WaitForSingleObject(other, INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(other, &code);
  EXPECT_EQ(code, 0U);
  for (const HANDLE handle : {ready, mutex, other}) CloseHandle(handle);
}

}  // namespace
}  // namespace tests
