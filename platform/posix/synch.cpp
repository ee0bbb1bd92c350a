#include "platform/synch.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/draft.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/size_signal.h"
#include "platform/utf.h"

// A named mutex is a file below the root with a robust pthread mutex in it, which every process of
// the machine's account maps; no other account may write to it, because that would change their
// memory. Each open handle holds a shared lock on the file, and the system releases the locks of
// dead processes. A file that can be locked exclusively is therefore a left-over: nobody has the
// mutex open. The next caller makes a new file, because the old one may still be mapped.

namespace platform {

namespace {

namespace fs = std::filesystem;

struct SharedMutex {
  pthread_mutex_t mutex;
  std::atomic<pid_t> ownerProcess;  ///< 0 when nobody owns it.
  std::atomic<pid_t> ownerThread;
  unsigned depth;  ///< Touched by the owner alone.
};

class Mutex : public Object {
 public:
  Mutex(Descriptor file, SharedMutex* shared) : m_file(std::move(file)), m_shared(shared) {}
  ~Mutex() override {
    // The memory of an owned mutex stays mapped, because its owner's list of robust mutexes leads
    // to it.
    if (m_shared->ownerProcess != getpid()) munmap(m_shared, sizeof(SharedMutex));
  }

  DWORD Wait(DWORD milliseconds) {
    const int result = Lock(milliseconds);
    if (result == ETIMEDOUT) return WAIT_TIMEOUT;
    if (result != 0 && result != EOWNERDEAD) {
      SetLastError(ErrorOf(result));
      return WAIT_FAILED;
    }
    if (result == EOWNERDEAD) {
      pthread_mutex_consistent(&m_shared->mutex);
      m_shared->depth = 0;
    }
    ++m_shared->depth;
    m_shared->ownerThread = gettid();
    m_shared->ownerProcess = getpid();
    return result == EOWNERDEAD ? WAIT_ABANDONED : WAIT_OBJECT_0;
  }

  BOOL Release() {
    if (m_shared->ownerThread != gettid()) return FailWith(ERROR_NOT_OWNER);
    if (--m_shared->depth == 0) {
      m_shared->ownerThread = 0;
      m_shared->ownerProcess = 0;
    }
    // Fails when this thread has the number of an owner that died.
    if (pthread_mutex_unlock(&m_shared->mutex) != 0) return FailWith(ERROR_NOT_OWNER);
    return TRUE;
  }

 private:
  /// Sleeps kNap at most, then tries again. An unlock wakes one sleeper; if that one is killed
  /// before it runs, nobody wakes the others.
  int Lock(DWORD milliseconds) {
    constexpr std::chrono::milliseconds kNap(100);
    const auto begin = std::chrono::steady_clock::now();
    for (;;) {
      std::chrono::nanoseconds nap = kNap;
      if (milliseconds != INFINITE)
        nap = std::min(nap, begin + std::chrono::milliseconds(milliseconds) -
                                std::chrono::steady_clock::now());
      const int result = LockWithin(nap);
      if (result != ETIMEDOUT || nap < kNap) return result;
    }
  }

  int LockWithin(std::chrono::nanoseconds patience) {
    constexpr long kSecond = 1'000'000'000;
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_nsec += std::max(patience.count(), {});
    end.tv_sec += end.tv_nsec / kSecond;
    end.tv_nsec %= kSecond;
    return pthread_mutex_clocklock(&m_shared->mutex, CLOCK_MONOTONIC, &end);
  }

  Descriptor m_file;
  SharedMutex* m_shared;
};

void Check(bool good) {
  if (!good) throw std::system_error(errno, std::generic_category());
}

bool IsAt(const Descriptor& file, const fs::path& path) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(file.Get(), &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
         opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

/// Returns the file of a mutex that somebody has open, locked; nothing when there is none. Removes
/// a left-over.
Descriptor OpenInUse(const fs::path& path) {
  for (;;) {
    Descriptor file = Open(path, O_RDWR);
    Check(file || errno == ENOENT);
    if (!file) return {};
    const bool isLeftOver = Lock(file, LOCK_EX, {});
    Check(isLeftOver || errno == EBUSY);
    Check(isLeftOver || Lock(file, LOCK_SH, kLockPatience));
    if (!IsAt(file, path)) continue;  // removed by another process meanwhile
    if (!isLeftOver) return file;
    Check(unlink(path.c_str()) == 0);
  }
}

/// Maps the file by a second opening, because a mapping that stays keeps the locks of its opening.
SharedMutex* Map(const Descriptor& file) {
  const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
  const Descriptor opened(open(path.c_str(), O_RDWR | O_CLOEXEC));
  Check(bool(opened));
  void* memory =
      mmap(nullptr, sizeof(SharedMutex), PROT_READ | PROT_WRITE, MAP_SHARED, opened.Get(), 0);
  Check(memory != MAP_FAILED);
  return static_cast<SharedMutex*>(memory);
}

/// Throws for a file that other accounts can open, because they could truncate it.
std::shared_ptr<Mutex> OpenMutex(Descriptor file) {
  struct stat status = {};
  Check(fstat(file.Get(), &status) == 0);
  if (status.st_size != sizeof(SharedMutex) || (status.st_mode & 077) != 0)
    throw std::system_error(EACCES, std::generic_category(), "not a mutex");
  SharedMutex* const shared = Map(file);
  return std::make_shared<Mutex>(std::move(file), shared);
}

/// Reserves the room on the disk, because touching mapped memory without room ends the process.
void TakeRoom(const Descriptor& file, off_t size) {
  const NoSizeSignal guard;
  const int error = posix_fallocate(file.Get(), 0, size);
  if (error != 0) throw std::system_error(error, std::generic_category());
}

/// Returns null when another process made the file first.
std::shared_ptr<Mutex> MakeMutex(const fs::path& path) {
  Draft draft(path);
  Check(Lock(draft.File(), LOCK_SH, {}));
  TakeRoom(draft.File(), sizeof(SharedMutex));
  auto* const shared = new (Map(draft.File())) SharedMutex{};
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&shared->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  auto mutex = std::make_shared<Mutex>(std::move(draft.File()), shared);
  return draft.Link() ? mutex : nullptr;
}

/// Returns the file name of a mutex, whose name has letters, digits, `_` and `-` behind `Global\`;
/// empty for any other name.
std::string FileName(std::wstring_view name) {
  constexpr std::wstring_view kGlobal = L"Global\\";
  const bool isGlobal = name.starts_with(kGlobal);
  if (isGlobal) name.remove_prefix(kGlobal.size());
  const bool isPlain = std::ranges::all_of(name, [](wchar_t unit) {
    return unit < 0x80 && (isalnum(static_cast<int>(unit)) != 0 || unit == L'_' || unit == L'-');
  });
  if (!isPlain || name.empty()) return {};
  return (isGlobal ? "Global+" : "") + ToUtf8(name);
}

fs::path Folder() {
  const fs::path folder = MachineRoot() / "mutex";
  Check(bool(OpenFolder(folder, Missing::kIsMade)));
  return folder;
}

std::shared_ptr<Mutex> OpenOrMake(const fs::path& path, bool& existed) {
  for (;;) {
    Descriptor file = OpenInUse(path);
    existed = bool(file);
    if (file) return OpenMutex(std::move(file));
    if (auto mutex = MakeMutex(path)) return mutex;
  }
}

HANDLE NoHandle(DWORD error) {
  SetLastError(error);
  return nullptr;
}

}  // namespace

}  // namespace platform

using platform::IsToFail;
using platform::NoHandle;

HANDLE CreateMutexW(const SECURITY_ATTRIBUTES*, BOOL initialOwner, LPCWSTR name) {
  if (IsToFail("CreateMutexW")) return nullptr;
  if (initialOwner != FALSE || name == nullptr) return NoHandle(ERROR_INVALID_PARAMETER);
  const std::string fileName = platform::FileName(name);
  if (fileName.empty()) return NoHandle(ERROR_PATH_NOT_FOUND);
  try {
    bool existed = false;
    const HANDLE handle =
        platform::AddObject(platform::OpenOrMake(platform::Folder() / fileName, existed));
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
  } catch (const std::system_error& error) {
    return NoHandle(platform::ErrorOf(error.code().value()));
  } catch (const std::bad_alloc&) {
    return NoHandle(ERROR_NOT_ENOUGH_MEMORY);
  }
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  if (IsToFail("WaitForSingleObject"))  // a fault may also be a time-out
    return GetLastError() == WAIT_TIMEOUT ? WAIT_TIMEOUT : WAIT_FAILED;
  const auto mutex = platform::FindObjectAs<platform::Mutex>(handle);
  return mutex == nullptr ? WAIT_FAILED : mutex->Wait(milliseconds);
}

BOOL ReleaseMutex(HANDLE handle) {
  if (IsToFail("ReleaseMutex")) return FALSE;
  const auto mutex = platform::FindObjectAs<platform::Mutex>(handle);
  return mutex == nullptr ? FALSE : mutex->Release();
}
