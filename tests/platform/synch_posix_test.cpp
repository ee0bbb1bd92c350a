#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/posix/machine/machine.h"
#include "platform/synch.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using tests::ErrorOf;

constexpr wchar_t kName[] = L"Global\\TEST";

/// Closed at the end.
using Handle = std::unique_ptr<void, decltype([](HANDLE handle) { CloseHandle(handle); })>;

Handle Make(LPCWSTR name = kName) {
  return Handle(CreateMutexW(nullptr, FALSE, name));
}

/// The last error that making the mutex leaves.
DWORD Making(LPCWSTR name) {
  const Handle handle = Make(name);
  return GetLastError();
}

DWORD InThread(const std::function<DWORD()>& action) {
  DWORD result = 0;
  std::thread([&] { result = action(); }).join();
  return result;
}

/// What a wait of another thread gives; it releases what it got.
DWORD WaitElsewhere(const Handle& mutex) {
  return InThread([&] {
    const DWORD result = WaitForSingleObject(mutex.get(), 0);
    if (result != WAIT_TIMEOUT) ReleaseMutex(mutex.get());
    return result;
  });
}

class Mutexes : public testing::Test {
 protected:
  /// A process takes the mutex by a handle of its own and is killed.
  static void KillAnOwner() {
    const pid_t child = fork();
    if (child == 0) {
      const Handle mutex = Make();
      WaitForSingleObject(mutex.get(), INFINITE);
      raise(SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, SIGKILL);
  }

  tests::TestMachine m_machine;
};

TEST_F(Mutexes, HaveOneOwnerThatCounts) {
  const Handle first = Make();
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
  const Handle second = Make();
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
  for (const Handle* each : {&first, &second})
    EXPECT_EQ(WaitForSingleObject(each->get(), INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(first.get(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(InThread([&] { return WaitForSingleObject(second.get(), 20); }), WAIT_TIMEOUT);
  EXPECT_EQ(InThread([&] { return ErrorOf(ReleaseMutex(first.get())); }), ERROR_NOT_OWNER);
  for (const Handle* each : {&first, &second, &first}) {
    EXPECT_EQ(WaitElsewhere(first), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(each->get()));
  }
  EXPECT_EQ(WaitElsewhere(second), WAIT_OBJECT_0);
  EXPECT_EQ(ErrorOf(ReleaseMutex(first.get())), ERROR_NOT_OWNER);
}

TEST_F(Mutexes, AreAbandonedByThreadsAndProcessesThatEnd) {
  const Handle mutex = Make();
  for (int round = 0; round < 2; ++round) {
    InThread([&] { return WaitForSingleObject(mutex.get(), 0); });
    EXPECT_EQ(WaitForSingleObject(mutex.get(), INFINITE), WAIT_ABANDONED);
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
  }
  KillAnOwner();
  EXPECT_EQ(WaitElsewhere(mutex), WAIT_ABANDONED);
  EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
}

TEST_F(Mutexes, AreGoneWithTheirLastHandle) {
  KillAnOwner();
  EXPECT_EQ(Making(kName), DWORD{ERROR_SUCCESS});
  // Closed while it is owned: the owner goes on with others, and the name is free.
  EXPECT_EQ(WaitForSingleObject(Make().get(), 0), WAIT_OBJECT_0);
  const Handle anew = Make();
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
  EXPECT_EQ(WaitElsewhere(anew), WAIT_OBJECT_0);
  // Another handle keeps it: it stays owned until its thread ends.
  InThread([] { return WaitForSingleObject(Make().get(), 0); });
  EXPECT_EQ(WaitElsewhere(anew), WAIT_ABANDONED);
}

// Who is killed when an unlock has just woken it takes the wake-up along.
TEST_F(Mutexes, AreFoundFreeByWaitersThatNobodyWakes) {
  const Handle mutex = Make();
  const pid_t owner = fork();
  if (owner == 0) {
    WaitForSingleObject(mutex.get(), INFINITE);
    for (;;) pause();
  }
  while (WaitElsewhere(mutex) != WAIT_TIMEOUT) std::this_thread::yield();
  std::thread freeing([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    std::fstream(platform::MachineRoot() / "mutex/Global+TEST").write("\0\0\0\0", 4);
  });
  EXPECT_EQ(WaitForSingleObject(mutex.get(), 180'000), WAIT_OBJECT_0);
  freeing.join();
  EXPECT_TRUE(ReleaseMutex(mutex.get()));
  kill(owner, SIGKILL);
  waitpid(owner, nullptr, 0);
}

// A mutex that was cut would end every process that has it mapped.
TEST_F(Mutexes, AreNoneThatIsCutOrOpenToOthers) {
  const fs::path folder = platform::MachineRoot() / "mutex", file = folder / "Global+TEST";
  const Handle mutex = Make();
  EXPECT_EQ(fs::status(folder).permissions(), fs::perms(0700));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
  fs::permissions(file, fs::perms(0604));
  EXPECT_EQ(Making(kName), DWORD{ERROR_ACCESS_DENIED});
  fs::permissions(file, fs::perms(0600));
  const auto size = fs::file_size(file);
  for (const auto wrong : {size - 1, size + 1}) {
    fs::resize_file(file, wrong);
    EXPECT_EQ(Making(kName), DWORD{ERROR_ACCESS_DENIED});
  }
  fs::resize_file(file, size);
  EXPECT_EQ(Making(kName), DWORD{ERROR_ALREADY_EXISTS});
}

}  // namespace
