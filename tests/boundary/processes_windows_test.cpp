// Several processes on one machine. The others are this program again, each running one of the
// disabled tests below.

#include <gtest/gtest.h>

#include <memory>

#include "boundary/exports.h"
#include "tests/recorder/recorder.h"
#include "tests/support/record.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

constexpr wchar_t kMutex[] = L"Global\\MIMOSA_HLE_SIGIL_SETTING";

struct Close {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, Close>;

/// An event that every process of a test sees under its name.
Handle Event(const wchar_t* name) {
  return Handle(CreateEventW(nullptr, TRUE, FALSE, name));
}

bool IsSet(const Handle& event) {
  return WaitForSingleObject(event.get(), 0) == WAIT_OBJECT_0;
}

Handle Start(const wchar_t* test) {
  wchar_t program[MAX_PATH];
  GetModuleFileNameW(nullptr, program, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(program) +
                         L"\" --gtest_also_run_disabled_tests --gtest_filter=Process.DISABLED_" +
                         test;
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  EXPECT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &process));
  CloseHandle(process.hThread);
  return Handle(process.hProcess);
}

DWORD ExitCode(const Handle& process) {
  WaitForSingleObject(process.get(), INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(process.get(), &code);
  return code;
}

/// Counts the processes that are ready.
Handle Semaphore(const wchar_t* name) {
  return Handle(CreateSemaphoreW(nullptr, 0, 2, name));
}

/// Runs a pass while another process owns the mutex.
TEST(Process, DISABLED_Waits) {
  RecorderReset();
  const Handle ready = Semaphore(L"ready"), released = Event(L"released");
  EXPECT_FALSE(IsSet(released));
  ReleaseSemaphore(ready.get(), 1, nullptr);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
  EXPECT_TRUE(IsSet(released)) << "the pass did not wait";
}

TEST(Process, DISABLED_TakesTheMutexAndStays) {
  const Handle mutex(CreateMutexW(nullptr, FALSE, kMutex));
  ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0);
  SetEvent(Event(L"taken").get());
  Sleep(INFINITE);
}

TEST(Processes, OnePassWaitsForTheOther) {
  TestMachine machine;
  const Handle ready = Semaphore(L"ready"), released = Event(L"released");
  const Handle mutex(CreateMutexW(nullptr, FALSE, kMutex));
  ASSERT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_OBJECT_0);
  const Handle first = Start(L"Waits"), second = Start(L"Waits");
  for (int i = 0; i < 2; ++i) WaitForSingleObject(ready.get(), INFINITE);
  SetEvent(released.get());
  ReleaseMutex(mutex.get());
  EXPECT_EQ(ExitCode(first), 0U);
  EXPECT_EQ(ExitCode(second), 0U);
}

TEST(Processes, ADeadOwnerCostsOnePassAtMost) {
  TestMachine machine;
  const Handle mutex(CreateMutexW(nullptr, FALSE, kMutex));  // Lives on after its owner.
  const Handle taken = Event(L"taken");
  const Handle owner = Start(L"TakesTheMutexAndStays");
  WaitForSingleObject(taken.get(), INFINITE);
  TerminateProcess(owner.get(), 1);
  ExitCode(owner);
  EXPECT_EQ(SigilSettingSetUseContentLog(true), -101);
  ExpectLinesWith({"GetMutex_SigilSetting"}, R"(
5 100908 GetMutex_SigilSetting "Sigil設定ファイルへのロックが取得できませんでした。"
)");
  EXPECT_EQ(SigilSettingSetUseContentLog(true), 0);
}

}  // namespace
}  // namespace tests
