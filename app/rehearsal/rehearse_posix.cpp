// The folder of a rehearsal, and its child process. A signal waits until both are gone.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "app/rehearsal/rehearse.h"
#include "peers/descriptor.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr char kPrefix[] = "sigilctl-rehearsal-";

/// Throws std::runtime_error for a folder in which another account could put a folder of its own in
/// the place of the scratch's: in the folder itself or in one above it.
void RequireClosed(fs::path folder) {
  for (;; folder = folder.parent_path()) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) peers::ThrowSystemError(folder.string());
    const bool isOthers = status.st_uid != 0 && status.st_uid != geteuid();
    const bool isOpen = (status.st_mode & 022) != 0 && (status.st_mode & S_ISVTX) == 0;
    if (isOthers || isOpen)
      throw std::runtime_error("TMPDIR is not safe: other accounts can replace what lies in " +
                               folder.string());
    if (folder == folder.root_path()) return;
  }
}

/// In memory where that can be had, because a rehearsal need not wait for a disk.
fs::path ScratchPlace() {
  const char* const named = getenv("TMPDIR");
  if (named != nullptr && *named != '\0') {
    fs::path place = fs::canonical(named);
    RequireClosed(place);
    return place;
  }
  const fs::path memory = "/dev/shm";
  return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::path("/tmp");
}

/// A descriptor that keeps the folder's lock, when the folder is this account's and nobody has its
/// lock.
peers::Descriptor LockFolder(const fs::path& path) {
  peers::Descriptor folder(
      open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
  struct stat own = {};
  struct stat named = {};
  const bool isOwn = folder && fstat(folder.Get(), &own) == 0 && own.st_uid == geteuid() &&
                     flock(folder.Get(), LOCK_EX | LOCK_NB) == 0;
  // Between the two another process may have removed it, as a left-over.
  const bool isThere = isOwn && lstat(path.c_str(), &named) == 0 && named.st_ino == own.st_ino;
  return isThere ? std::move(folder) : peers::Descriptor();
}

void RemoveLeftOvers(const fs::path& place) {
  std::error_code ignored;
  for (const fs::directory_entry& each : fs::directory_iterator(place, ignored))
    if (each.path().filename().string().starts_with(kPrefix))
      if (const peers::Descriptor lock = LockFolder(each.path()))
        fs::remove_all(each.path(), ignored);
}

fs::path MakeFolder(peers::Descriptor& lock) {
  const fs::path place = ScratchPlace();
  RemoveLeftOvers(place);
  constexpr int kTries = 8;
  for (int i = 0; i < kTries; ++i) {
    std::string name = (place / kPrefix).string() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) peers::ThrowSystemError(name);
    lock = LockFolder(name);
    if (lock) return name;
    rmdir(name.c_str());
  }
  throw std::runtime_error(place.string() + ": no folder there can be locked");
}

/// SIGHUP, SIGINT, SIGQUIT and SIGTERM wait in its lifetime, and take effect at its end.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
      struct sigaction now = {};
      const bool isIgnored = sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
      if (!isIgnored) sigaddset(&held, signal);
    }
    pthread_sigmask(SIG_BLOCK, &held, &m_before);
    m_file = peers::Descriptor(signalfd(-1, &held, SFD_CLOEXEC));
  }
  ~HeldSignals() { Release(); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

  /// Becomes readable, for poll(2), as soon as one of them waits.
  int File() const { return m_file.Get(); }
  /// Has the calling process, a child, take them as before.
  void Release() const { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

 private:
  sigset_t m_before = {};
  peers::Descriptor m_file;
};

/// A child process for a rehearsal. It is killed where its parent does not wait for its end.
class Child {
 public:
  Child(const ScratchMachine& scratch, const HeldSignals& signals, const PolicyCall& call)
      : m_signals(signals) {
    signal(SIGCHLD, SIG_DFL);  // a parent that ignores it would have its child end unseen
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) peers::ThrowSystemError("the rehearsal's pipe");
    m_reading = peers::Descriptor(ends[0]);
    m_writing = peers::Descriptor(ends[1]);
    m_process = fork();
    if (m_process < 0) peers::ThrowSystemError("the rehearsal's process");
    if (m_process == 0) Work(scratch, call);
    m_writing.Reset();
  }
  ~Child() {
    if (m_process <= 0) return;
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Reads the child's answer until it closes the pipe. Throws when a signal waits for this
  /// process.
  std::string Answer() {
    constexpr int kTickMilliseconds = 200;
    Progress progress;
    std::string bytes;
    char block[0x4000];
    for (;;) {
      pollfd files[] = {{m_reading.Get(), POLLIN, 0}, {m_signals.File(), POLLIN, 0}};
      if (poll(files, 2, kTickMilliseconds) == 0) progress.Tick();
      if (files[1].revents != 0) throw std::runtime_error("the rehearsal was interrupted");
      if (files[0].revents == 0) continue;
      const ssize_t step = read(m_reading.Get(), block, sizeof block);
      if (step == 0) break;
      if (step < 0 && errno != EINTR) peers::ThrowSystemError("the rehearsal");
      if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
    }
    Await();
    return bytes;
  }

 private:
  /// Where the parent has been killed, the child removes the scratch.
  [[noreturn]] void Work(const ScratchMachine& scratch, const PolicyCall& call) {
    m_reading.Reset();
    m_signals.Release();
    for (const int ignored : {SIGPIPE, SIGXFSZ}) signal(ignored, SIG_IGN);
    try {
      platform::WriteAll(m_writing.Get(), AnswerOf(scratch, call), "the rehearsal's pipe");
    } catch (const std::system_error&) {
      scratch.Remove();
    }
    _exit(0);
  }

  void Await() {
    int status = 0;
    while (waitpid(m_process, &status, 0) < 0)
      if (errno != EINTR) peers::ThrowSystemError("the rehearsal");
    m_process = 0;
    if (WIFSIGNALED(status))
      throw std::runtime_error(std::string("the rehearsal was ended: ") +
                               strsignal(WTERMSIG(status)));
  }

  const HeldSignals& m_signals;
  peers::Descriptor m_reading;  ///< The ends of the pipe for the answer.
  peers::Descriptor m_writing;
  pid_t m_process = 0;
};

}  // namespace

struct ScratchMachine::Hold {
  HeldSignals signals;
  peers::Descriptor lock;
};

ScratchMachine::ScratchMachine()
    : m_hold(std::make_unique<Hold>()), m_folder(MakeFolder(m_hold->lock)) {}

ScratchMachine::~ScratchMachine() {
  Remove();
}

void ScratchMachine::Remove() const {
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

std::string ScratchMachine::Ask(const PolicyCall& call) const {
  return Child(*this, m_hold->signals, call).Answer();
}

}  // namespace app
