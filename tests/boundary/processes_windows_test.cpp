// Two processes on one machine. The other is this program again, running a disabled test below.

#include <gtest/gtest.h>

#include "boundary/exports.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

HANDLE Ready() {
  return CreateEventW(nullptr, TRUE, FALSE, L"ready");
}

HANDLE TakeMutex() {
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Global\\MIMOSA_HLE_SIGIL_SETTING");
  EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
  return mutex;
}

/// Runs the disabled test in another process, until it has said that it is ready.
HANDLE StartOther(const wchar_t* test) {
  const HANDLE ready = Ready();
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(program) +
                         L"\" --gtest_also_run_disabled_tests --gtest_filter=*DISABLED_" + test;
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &process));
  WaitForSingleObject(ready, INFINITE);
  CloseHandle(ready);
  CloseHandle(process.hThread);
  return process.hProcess;
}

TEST(Processes, DISABLED_Pass) {
  SetEvent(Ready());
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
}

TEST(Processes, OnePassWaitsForTheOther) {
  TestMachine machine;
  const HANDLE mutex = TakeMutex(), other = StartOther(L"Pass");
  constexpr DWORD kPassesEnd = 300;  // Milliseconds; a slow machine makes the look weaker, no more.
  EXPECT_EQ(WaitForSingleObject(other, kPassesEnd), static_cast<DWORD>(WAIT_TIMEOUT));
  ReleaseMutex(mutex);
  WaitForSingleObject(other, INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(other, &code);
  EXPECT_EQ(code, 0U);
  for (const HANDLE handle : {mutex, other}) CloseHandle(handle);
}

TEST(Processes, DISABLED_Holder) {
  TakeMutex();
  SetEvent(Ready());
  Sleep(INFINITE);
}

TEST(Processes, OneThatIsKilledWithTheMutexCostsOnePass) {
  TestMachine machine;
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Global\\MIMOSA_HLE_SIGIL_SETTING");
  const HANDLE other = StartOther(L"Holder");
  TerminateProcess(other, 1);
  WaitForSingleObject(other, INFINITE);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), -101);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  for (const HANDLE handle : {mutex, other}) CloseHandle(handle);
}

}  // namespace
}  // namespace tests
