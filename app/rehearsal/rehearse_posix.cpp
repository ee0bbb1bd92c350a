#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/pass/messages.h"
#include "app/rehearsal/progress.h"
#include "app/rehearsal/rehearse.h"
#include "app/rehearsal/scratch_machine_posix.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace app {
namespace {

void EnterMachine(const std::filesystem::path& root) {
  setenv("SIGIL_ROOT", root.c_str(), 1);
  unsetenv("SIGIL_LOG");
  setenv("SIGIL_LOG_LEVEL", "9", 1);  // the messages are watched; nobody reads the scratch's log
}

/// False when nobody reads any more.
bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t step = write(file, bytes.data(), bytes.size());
    if (step < 0 && errno != EINTR) return false;
    if (step > 0) bytes.remove_prefix(static_cast<std::size_t>(step));
  }
  return true;
}

struct Pipe {
  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) peers::ThrowSystemError("the rehearsal's pipe");
    reading = peers::Descriptor(ends[0]);
    writing = peers::Descriptor(ends[1]);
  }

  peers::Descriptor reading;
  peers::Descriptor writing;
};

/// A child process for a rehearsal. It is killed where its parent does not wait for its end.
class Child {
 public:
  Child(const ScratchMachine& scratch, const HeldSignals& signals, const PolicyCall& call)
      : m_signals(signals) {
    signal(SIGCHLD, SIG_DFL);  // a parent that ignores it would have its child end unseen
    m_process = fork();
    if (m_process < 0) peers::ThrowSystemError("the rehearsal's process");
    if (m_process == 0) Work(scratch, call);
    m_pipe.writing.Reset();
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
      pollfd files[] = {{m_pipe.reading.Get(), POLLIN, 0}, {m_signals.File(), POLLIN, 0}};
      if (poll(files, 2, kTickMilliseconds) == 0) progress.Tick();
      if (files[1].revents != 0) throw std::runtime_error("the rehearsal was interrupted");
      if (files[0].revents == 0) continue;
      const ssize_t step = read(m_pipe.reading.Get(), block, sizeof block);
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
    m_pipe.reading.Reset();
    m_signals.Release();
    for (const int ignored : {SIGPIPE, SIGXFSZ}) signal(ignored, SIG_IGN);
    if (!WriteAll(m_pipe.writing.Get(), AnswerOf(scratch, call))) scratch.Remove();
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
  Pipe m_pipe;
  pid_t m_process = 0;
};

}  // namespace

void ScratchMachine::Enter() const {
  EnterMachine(CopyMachine());
}

std::string ScratchMachine::WhyUndelivered(const std::wstring& text) const {
  EnterMachine(MakeBareMachine());
  const DeliveryFolder delivery = FindDeliveryFolder();
  const auto write = [](const std::wstring& path, const std::string& bytes) {
    const auto file = platform::HostPath(path);
    std::filesystem::create_directories(file.parent_path());
    platform::ReplaceWholeFile(file, bytes);
  };
  write(delivery.PolicyFile(), SealText(platform::ToUtf8(text)));
  write(delivery.SystemSetting(), "63,1\r\n");
  const Outcome outcome = Call([](const Exports& exports) { return exports.set(); });
  if (outcome.result != SIGIL_SETTING_FAILED) return "";
  const auto isFailure = [](const Message& message) {
    return MeaningOf(message).weight == Weight::kFailure;
  };
  const std::vector<Message> troubles = Troubles(outcome.messages);
  const auto first = std::ranges::find_if(troubles, isFailure);
  if (first == troubles.end() || !RefusesDelivery(*first))
    throw std::runtime_error("set could not be tried: " + FirstFailure(troubles).sentence);
  return MeaningOf(*first).sentence;
}

std::string ScratchMachine::Ask(const PolicyCall& call) const {
  return Child(*this, m_hold->signals, call).Answer();
}

}  // namespace app
