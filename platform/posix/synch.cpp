#include "platform/synch.h"

#include <fcntl.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/posix/handle.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

// A named mutex is a file below the root with a robust pthread mutex in it, which every process
// maps. Each open handle holds a shared lock on the file, and the system takes the locks of dead
// processes back. So a file that can be locked exclusively is a left-over: nobody has the mutex,
// and the next one to ask gets a new one, in a new file, since the old may still be mapped
// somewhere.

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
    // A mutex that is owned hangs in its owner's list of robust mutexes: its memory has to stay.
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
    // Fails when the number is that of an owner that died and this thread got it anew.
    if (pthread_mutex_unlock(&m_shared->mutex) != 0) return FailWith(ERROR_NOT_OWNER);
    return TRUE;
  }

 private:
  int Lock(DWORD milliseconds) {
    if (milliseconds == INFINITE) return pthread_mutex_lock(&m_shared->mutex);
    constexpr long kSecond = 1'000'000'000;
    timespec end;
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += milliseconds / 1000;
    end.tv_nsec += milliseconds % 1000 * 1'000'000L;
    if (end.tv_nsec >= kSecond) {
      ++end.tv_sec;
      end.tv_nsec -= kSecond;
    }
    return pthread_mutex_clocklock(&m_shared->mutex, CLOCK_MONOTONIC, &end);
  }

  Descriptor m_file;
  SharedMutex* m_shared;
};

void Check(bool good) {
  if (!good) throw std::system_error(errno, std::generic_category());
}

/// The locks belong to the open file, not to the process: each handle has its own.
bool LockFile(const Descriptor& file, short type, bool wait) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  int result;
  do {
    result = fcntl(file.Get(), wait ? F_OFD_SETLKW : F_OFD_SETLK, &lock);
  } while (result != 0 && errno == EINTR);
  Check(result == 0 || errno == EAGAIN || errno == EACCES);
  return result == 0;
}

bool IsAt(const Descriptor& file, const fs::path& path) {
  struct stat opened = {};
  struct stat named = {};
  return fstat(file.Get(), &opened) == 0 && stat(path.c_str(), &named) == 0 &&
         opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

/// The file of a mutex that somebody has, locked. Nothing when there is none; a left-over is
/// removed.
Descriptor OpenInUse(const fs::path& path) {
  for (;;) {
    Descriptor file(open(path.c_str(), O_RDWR | O_CLOEXEC));
    Check(file || errno == ENOENT);
    if (!file) return {};
    const bool isLeftOver = LockFile(file, F_WRLCK, false);
    if (!isLeftOver) LockFile(file, F_RDLCK, true);
    if (!IsAt(file, path)) continue;  // removed by another process meanwhile
    if (!isLeftOver) return file;
    Check(unlink(path.c_str()) == 0);
  }
}

/// By an opening of its own: a mapping that has to stay would keep the lock of the other.
SharedMutex* Map(const Descriptor& file) {
  const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
  const Descriptor opened(open(path.c_str(), O_RDWR | O_CLOEXEC));
  Check(bool(opened));
  void* memory =
      mmap(nullptr, sizeof(SharedMutex), PROT_READ | PROT_WRITE, MAP_SHARED, opened.Get(), 0);
  Check(memory != MAP_FAILED);
  return static_cast<SharedMutex*>(memory);
}

std::shared_ptr<Mutex> OpenMutex(Descriptor file) {
  struct stat status = {};
  Check(fstat(file.Get(), &status) == 0);
  if (status.st_size != sizeof(SharedMutex))
    throw std::system_error(EBADF, std::generic_category(), "not a mutex");
  SharedMutex* const shared = Map(file);
  return std::make_shared<Mutex>(std::move(file), shared);
}

/// Takes the room on the disk at once: on a full one, touching memory that has none yet would end
/// the process.
void TakeRoom(const Descriptor& file, off_t size) {
  const int error = posix_fallocate(file.Get(), 0, size);
  if (error != 0) throw std::system_error(error, std::generic_category());
}

std::shared_ptr<Mutex> MakeMutex(Descriptor file, bool owned) {
  TakeRoom(file, sizeof(SharedMutex));
  auto* const shared = new (Map(file)) SharedMutex{};
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
  pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&shared->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  auto mutex = std::make_shared<Mutex>(std::move(file), shared);
  if (owned) mutex->Wait(INFINITE);
  return mutex;
}

/// Null when another process was faster.
std::shared_ptr<Mutex> MakeNamed(const fs::path& path, bool owned) {
  struct Draft {
    ~Draft() { unlink(name.c_str()); }
    std::string name;
  } draft{(path.parent_path() / ".XXXXXX").string()};
  Descriptor file(mkostemp(draft.name.data(), O_CLOEXEC));
  Check(bool(file));
  LockFile(file, F_RDLCK, true);
  Check(fchmod(file.Get(), 0666) == 0);
  std::shared_ptr<Mutex> mutex = MakeMutex(std::move(file), owned);
  if (link(draft.name.c_str(), path.c_str()) == 0) return mutex;
  const int error = errno;
  if (owned) mutex->Release();
  if (error != EEXIST) throw std::system_error(error, std::generic_category());
  return nullptr;
}

/// One file name for each mutex name. Empty for a name that is none.
std::string FileName(std::wstring_view name) {
  constexpr std::wstring_view kGlobal = L"Global\\";
  constexpr std::wstring_view kLocal = L"Local\\";
  std::string fileName;
  if (name.starts_with(kGlobal)) {
    name.remove_prefix(kGlobal.size());
    fileName = "Global+";
  } else if (name.starts_with(kLocal)) {
    name.remove_prefix(kLocal.size());
  }
  if (name.find(L'\\') != name.npos) return {};
  for (const char byte : ToUtf8(name)) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto number = static_cast<unsigned char>(byte);
    const bool plain = number >= 0x80 || isalnum(number) != 0 || byte == '_' || byte == '-';
    if (plain)
      fileName += byte;
    else
      fileName.append({'%', kDigits[number >> 4], kDigits[number & 15]});
  }
  return fileName;
}

fs::path Folder() {
  const fs::path folder = MachineRoot() / "mutex";
  if (fs::create_directories(folder)) fs::permissions(folder, fs::perms::all);
  return folder;
}

std::shared_ptr<Mutex> OpenOrMake(const fs::path& path, bool owned, bool& existed) {
  for (;;) {
    Descriptor file = OpenInUse(path);
    existed = bool(file);
    if (file) return OpenMutex(std::move(file));
    if (auto mutex = MakeNamed(path, owned)) return mutex;
  }
}

}  // namespace

}  // namespace platform

using platform::FailWith;
using platform::IsToFail;

HANDLE CreateMutexW(const SECURITY_ATTRIBUTES*, BOOL initialOwner, LPCWSTR name) {
  if (IsToFail("CreateMutexW")) return nullptr;
  const bool owned = initialOwner != FALSE;
  try {
    bool existed = false;
    std::shared_ptr<platform::Mutex> mutex;
    if (name == nullptr || *name == L'\0') {
      platform::Descriptor file(memfd_create("mutex", MFD_CLOEXEC));
      platform::Check(bool(file));
      mutex = platform::MakeMutex(std::move(file), owned);
    } else {
      const std::string fileName = platform::FileName(name);
      if (fileName.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return nullptr;
      }
      mutex = platform::OpenOrMake(platform::Folder() / fileName, owned, existed);
    }
    const HANDLE handle = platform::AddObject(std::move(mutex));
    SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
  } catch (const std::system_error& error) {
    SetLastError(platform::ErrorOf(error.code().value()));
  } catch (const std::bad_alloc&) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  }
  return nullptr;
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
