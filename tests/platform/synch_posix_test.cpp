#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>

#include "platform/synch.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace {

constexpr wchar_t kName[] = L"Global\\TEST";

/// A handle that is closed at the end.
class Handle {
 public:
  explicit Handle(LPCWSTR name = kName, BOOL owned = FALSE)
      : m_handle(CreateMutexW(nullptr, owned, name)), m_error(GetLastError()) {}
  ~Handle() {
    if (m_handle != nullptr) CloseHandle(m_handle);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  operator HANDLE() const { return m_handle; }
  /// As its making left the last error.
  DWORD Error() const { return m_error; }

 private:
  HANDLE m_handle;
  DWORD m_error;
};

DWORD InThread(const std::function<DWORD()>& action) {
  DWORD result = 0;
  std::thread([&] { result = action(); }).join();
  return result;
}

/// What a wait of another thread gives; it releases what it got.
DWORD WaitElsewhere(HANDLE mutex) {
  return InThread([&] {
    const DWORD result = WaitForSingleObject(mutex, 0);
    if (result != WAIT_TIMEOUT) ReleaseMutex(mutex);
    return result;
  });
}

class Mutexes : public testing::Test {
 protected:
  static pid_t Start(const std::function<int()>& action) {
    const pid_t child = fork();
    if (child == 0) _exit(action());
    return child;
  }
  /// The exit code; 100 for a process that was killed.
  static int End(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
  }
  /// Starts a process that takes the mutex by a handle of its own, and kills it then.
  static void KillAnOwner() {
    const pid_t child = Start([&] {
      Handle mutex;
      WaitForSingleObject(mutex, INFINITE);
      return raise(SIGKILL);
    });
    EXPECT_EQ(End(child), 100);
  }

  tests::TestMachine m_machine;
};

TEST_F(Mutexes, HaveOneOwnerThatCounts) {
  Handle first(kName, TRUE);
  EXPECT_EQ(first.Error(), DWORD{ERROR_SUCCESS});
  Handle second(kName, TRUE);
  EXPECT_EQ(second.Error(), DWORD{ERROR_ALREADY_EXISTS});
  EXPECT_EQ(WaitForSingleObject(second, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(first, 0), WAIT_OBJECT_0);
  EXPECT_EQ(InThread([&] { return WaitForSingleObject(second, 20); }), WAIT_TIMEOUT);
  EXPECT_EQ(InThread([&] { return tests::ErrorOf(ReleaseMutex(first)); }), ERROR_NOT_OWNER);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(WaitElsewhere(first), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(i == 1 ? second : first));
  }
  EXPECT_EQ(WaitElsewhere(second), WAIT_OBJECT_0);
  EXPECT_EQ(tests::ErrorOf(ReleaseMutex(first)), ERROR_NOT_OWNER);
}

TEST_F(Mutexes, AreToldApartByNameAndHandle) {
  Handle own(kName, TRUE);
  const std::wstring tooLong(300, L'x');
  using Row = std::pair<LPCWSTR, DWORD>;
  for (const auto& [name, error] :
       {Row(kName, ERROR_ALREADY_EXISTS), Row(L"TEST", ERROR_SUCCESS),
        Row(L"Global\\test", ERROR_SUCCESS), Row(L"Global\\会議室 ../%", ERROR_SUCCESS),
        Row(nullptr, ERROR_SUCCESS), Row(L"Global\\a\\b", ERROR_PATH_NOT_FOUND),
        Row(tooLong.c_str(), ERROR_FILENAME_EXCED_RANGE)})
    EXPECT_EQ(Handle(name).Error(), error);
  const Handle local(L"Local\\TEST");
  EXPECT_EQ(Handle(L"TEST").Error(), DWORD{ERROR_ALREADY_EXISTS});

  const HANDLE closed = CreateMutexW(nullptr, FALSE, kName);
  EXPECT_TRUE(CloseHandle(closed));
  for (const HANDLE bad : {closed, HANDLE{nullptr}, INVALID_HANDLE_VALUE}) {
    EXPECT_EQ(tests::ErrorOf(CloseHandle(bad)), ERROR_INVALID_HANDLE);
    EXPECT_EQ(WaitForSingleObject(bad, 0), WAIT_FAILED);
    EXPECT_EQ(tests::ErrorOf(ReleaseMutex(bad)), ERROR_INVALID_HANDLE);
  }
}

TEST_F(Mutexes, AreAbandonedByThreadsAndProcessesThatEnd) {
  Handle mutex;
  for (int round = 0; round < 2; ++round) {
    InThread([&] { return WaitForSingleObject(mutex, 0) + WaitForSingleObject(mutex, 0); });
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
  }
  KillAnOwner();
  EXPECT_EQ(WaitElsewhere(mutex), WAIT_ABANDONED);
  EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
}

TEST_F(Mutexes, AreGoneWithTheirLastHandle) {
  KillAnOwner();
  EXPECT_EQ(Handle().Error(), DWORD{ERROR_SUCCESS});
  // Closed while it is owned: the owner goes on with others, and the name is free.
  { Handle owned(kName, TRUE); }
  Handle anew;
  EXPECT_EQ(anew.Error(), DWORD{ERROR_SUCCESS});
  EXPECT_EQ(WaitElsewhere(anew), WAIT_OBJECT_0);
  // Another handle keeps it: it stays owned until its thread ends.
  InThread([&] {
    Handle other;
    EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_OBJECT_0);
    return CloseHandle(CreateMutexW(nullptr, FALSE, kName));
  });
  EXPECT_EQ(WaitElsewhere(anew), WAIT_ABANDONED);
}

// Each round makes the mutex or opens it, so that making and vanishing meet in every way.
TEST_F(Mutexes, LetOneProcessInAtATime) {
  constexpr int kRounds = 300;
  void* memory =
      mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto& counter = *static_cast<volatile int*>(memory);
  pid_t children[4];
  for (pid_t& child : children)
    child = Start([&] {
      for (int i = 0; i < kRounds; ++i) {
        Handle mutex;
        if (WaitForSingleObject(mutex, i % 2 == 0 ? INFINITE : 60000) != WAIT_OBJECT_0) return 1;
        const int seen = counter;
        if (i % 7 == 0) usleep(1);
        counter = seen + 1;
        if (!ReleaseMutex(mutex)) return 2;
      }
      return 0;
    });
  for (const pid_t child : children) EXPECT_EQ(End(child), 0);
  EXPECT_EQ(counter, 4 * kRounds);
  munmap(memory, sizeof(int));
}

}  // namespace
