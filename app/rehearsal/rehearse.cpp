#include "app/rehearsal/rehearse.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "app/pass/messages.h"
#include "app/rehearsal/progress.h"
#include "app/text/errors.h"
#include "peers/descriptor.h"

namespace app {
namespace {

using Json = nlohmann::json;

/// What the child tells its parent: the outcome and the setting file, or an error.
std::string Told(const ScratchMachine& machine, const ExportCall& call) {
  try {
    setenv("SIGIL_ROOT", machine.Root().c_str(), 1);
    unsetenv("SIGIL_LOG");
    setenv("SIGIL_LOG_LEVEL", "9", 1);  // the messages are watched; nobody reads the scratch's log
    const Outcome outcome = Call(call);
    Json messages = Json::array();
    for (const Message& message : outcome.messages)
      messages.push_back({message.level, message.number, message.function, message.text});
    return Json({{"result", outcome.result},
                 {"messages", messages},
                 {"file", peers::FindSettingPlace().file.string()}})
        .dump(-1, ' ', false, Json::error_handler_t::replace);
  } catch (const std::exception& error) {
    return Json({{"error", CauseOf(error)}}).dump(-1, ' ', false, Json::error_handler_t::replace);
  }
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

/// The child, which tells by the pipe. Where its parent has been killed, it does the cleaning up.
pid_t Start(Pipe& pipe, const ScratchMachine& machine, const ExportCall& call) {
  const pid_t child = fork();
  if (child < 0) peers::ThrowSystemError("the rehearsal's process");
  if (child > 0) return child;
  pipe.reading.Reset();
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  signal(SIGPIPE, SIG_IGN);
  std::error_code ignored;
  if (!WriteAll(pipe.writing.Get(), Told(machine, call)))
    std::filesystem::remove_all(machine.Root(), ignored);
  _exit(0);
}

/// Waits for what the child tells, and so for its work.
std::string ReadAll(int file) {
  constexpr int kTickMilliseconds = 200;
  Progress progress;
  std::string bytes;
  char block[0x4000];
  for (;;) {
    pollfd readable = {file, POLLIN, 0};
    if (poll(&readable, 1, kTickMilliseconds) == 0) {
      progress.Tick();
      continue;
    }
    const ssize_t step = read(file, block, sizeof block);
    if (step == 0) return bytes;
    if (step < 0 && errno != EINTR) peers::ThrowSystemError("the rehearsal");
    if (step > 0) bytes.append(block, static_cast<std::size_t>(step));
  }
}

/// Waits for the child, which has told what it had to.
void Await(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) peers::ThrowSystemError("the rehearsal");
  if (WIFSIGNALED(status))
    throw std::runtime_error(std::string("the rehearsal was ended: ") +
                             strsignal(WTERMSIG(status)));
}

Outcome OutcomeOf(const Json& told) {
  Outcome outcome{told.at("result"), {}};
  for (const Json& message : told.at("messages"))
    outcome.messages.push_back({message.at(0), message.at(1), message.at(2), message.at(3)});
  return outcome;
}

/// A scratch machine that is not saved would be told of as if the policy were to blame.
void RequireSaved(const Rehearsal& rehearsal, const std::filesystem::path& place) {
  std::set<std::string> guids;
  for (const peers::EntryRecord& entry : rehearsal.records.entries)
    for (const peers::WatermarkRecord& mark : entry.watermarks) guids.insert(mark.id);
  const bool isSaved = std::ranges::all_of(rehearsal.outcome.messages, [&](const Message& message) {
    const auto made = MadeMarkIn(message);
    return MeaningOf(message).weight != Weight::kUnsaved && (!made || guids.contains(made->guid));
  });
  if (!isSaved)
    throw std::runtime_error("the scratch machine in " + place.string() + " could not be saved");
}

}  // namespace

Rehearsal Rehearse(const ScratchMachine& machine, const ExportCall& call) {
  Pipe pipe;
  const pid_t child = Start(pipe, machine, call);
  pipe.writing.Reset();
  const std::string bytes = ReadAll(pipe.reading.Get());
  Await(child);
  const Json told = Json::parse(bytes);
  if (told.contains("error")) throw std::runtime_error(told.at("error").get<std::string>());
  const std::string file = told.at("file");
  Rehearsal rehearsal{OutcomeOf(told), peers::ReadSettingFile(file)};
  RequireSaved(rehearsal, machine.Root().parent_path());
  return rehearsal;
}

}  // namespace app
