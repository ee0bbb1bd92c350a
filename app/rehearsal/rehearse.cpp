#include "app/rehearsal/rehearse.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>

#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/machine/user_file.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/json.h"
#include "peers/descriptor.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace app {
namespace {

/// For somebody at a terminal: one line on standard error, "rehearsing: 3 s ...", that comes after
/// a second and goes with this object.
class Progress {
 public:
  Progress() = default;
  ~Progress() {
    if (!m_line.empty()) std::cerr << "\r" << std::string(m_line.size(), ' ') << "\r" << std::flush;
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Tick() {
    const auto passed = std::chrono::steady_clock::now() - m_start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
    std::string line = "rehearsing: " + std::to_string(seconds) + " s ...";
    if (!m_isSeen || seconds == 0 || line == m_line) return;
    m_line = std::move(line);
    std::cerr << "\r" << m_line << std::flush;
  }

 private:
  const bool m_isSeen = isatty(STDERR_FILENO) != 0;
  const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
  std::string m_line;  ///< As it stands there.
};

void EnterMachine(const std::filesystem::path& root) {
  setenv("SIGIL_ROOT", root.c_str(), 1);
  unsetenv("SIGIL_LOG");
  setenv("SIGIL_LOG_LEVEL", "9", 1);  // the messages are watched; nobody reads the scratch's log
}

/// Why set refuses the text as the delivered policy of the current machine, on which it switches
/// the function on.
std::string WhyUndelivered(const std::wstring& text) {
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

Json JsonOf(const Message& message) {
  return {message.level, message.number, message.function, message.text};
}

Message MessageOf(const Json& json) {
  return {json.at(0), json.at(1), json.at(2), json.at(3)};
}

/// "walk": the messages about the default entry's elements; "guids": those made of any entry.
Json WalkOf(const Outcome& outcome) {
  Json walk = Json::array();
  Json guids = Json::array();
  bool hasUnread = false;
  std::size_t entries = 0;
  for (const Message& message : outcome.messages) {
    const Step step = StepOf(message);
    if (step == Step::kEntry) ++entries;
    hasUnread = hasUnread || step == Step::kUnread;
    if (const auto made = MadeMarkIn(message)) guids.push_back(made->guid);
    if (entries <= 1 && (step == Step::kMade || step == Step::kDropped))
      walk.push_back(JsonOf(message));
  }
  return {{"walk", walk}, {"guids", guids}, {"hasUnread", hasUnread}};
}

std::vector<Registered> Match(const Json& walk, const peers::SettingFileContent& records) {
  std::map<std::string, const peers::WatermarkRecord*> marks;
  if (const auto* entry = DefaultEntry(records))
    for (const peers::WatermarkRecord& mark : entry->watermarks) marks[mark.id] = &mark;
  std::vector<Registered> all;
  for (const Json& each : walk) {
    const Message message = MessageOf(each);
    const auto made = MadeMarkIn(message);
    const auto mark = made ? marks.find(made->guid) : marks.end();
    Registered& registered = all.emplace_back();
    if (!made) registered.reason = message;
    if (mark != marks.end()) registered.mark = *mark->second;
    registered.isStamp = made && made->isStamp;
  }
  return all;
}

/// Throws if the scratch machine was not saved; else the policy would be blamed.
void RequireSaved(const Rehearsal& rehearsal, const Json& guids, const ScratchMachine& scratch) {
  std::set<std::string> saved;
  for (const peers::EntryRecord& entry : rehearsal.records.entries)
    for (const peers::WatermarkRecord& mark : entry.watermarks) saved.insert(mark.id);
  const bool isSaved =
      std::ranges::all_of(guids, [&](const Json& guid) { return saved.contains(guid); }) &&
      std::ranges::none_of(rehearsal.troubles, [](const Message& message) {
        return MeaningOf(message).weight == Weight::kUnsaved;
      });
  if (!isSaved)
    throw std::runtime_error("the scratch machine in " + scratch.Place().string() +
                             " could not be saved");
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
  Child(const ScratchMachine& scratch, const PolicyCall& call) {
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
  std::string Answer(const HeldSignals& signals) {
    constexpr int kTickMilliseconds = 200;
    Progress progress;
    std::string bytes;
    char block[0x4000];
    for (;;) {
      pollfd files[] = {{m_pipe.reading.Get(), POLLIN, 0}, {signals.File(), POLLIN, 0}};
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
    scratch.Signals().Release();
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

  Pipe m_pipe;
  pid_t m_process = 0;
};

}  // namespace

std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call) try {
  const auto bare = scratch.MakeBareMachine();
  EnterMachine(scratch.CopyMachine());
  LayUserFile();  // as the command `update` does
  const Outcome outcome = Call(UpdateCall(call.text, call.policyId, call.resetName));
  Json answer = WalkOf(outcome);
  answer["result"] = outcome.result;
  answer["file"] = peers::FindSettingPlace().file.string();
  answer["troubles"] = Json::array();
  for (const Message& trouble : Troubles(outcome.messages))
    answer["troubles"].push_back(JsonOf(trouble));
  EnterMachine(bare);
  const bool isTried = outcome.result != SIGIL_SETTING_FAILED;
  answer["undelivered"] = isTried ? WhyUndelivered(call.text) : "";
  return answer.dump(-1, ' ', false, Json::error_handler_t::replace);
} catch (const std::exception& error) {
  const Json answer = {{"error", CauseOf(error)}};
  return answer.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Rehearsal TakeIn(const std::string& answer, const ScratchMachine& scratch) {
  const Json told = Json::parse(answer, nullptr, false);
  if (!told.is_object()) throw std::runtime_error("the rehearsal ended without an answer");
  if (told.contains("error")) throw std::runtime_error(told.at("error").get<std::string>());
  Rehearsal rehearsal;
  rehearsal.result = told.at("result");
  for (const Json& trouble : told.at("troubles")) rehearsal.troubles.push_back(MessageOf(trouble));
  rehearsal.records = peers::ReadSettingFile(told.at("file").get<std::string>());
  rehearsal.registered = Match(told.at("walk"), rehearsal.records);
  rehearsal.hasUnread = told.at("hasUnread");
  rehearsal.undelivered = told.at("undelivered");
  RequireSaved(rehearsal, told.at("guids"), scratch);
  return rehearsal;
}

Rehearsal Rehearse(const PolicyCall& call) {
  const ScratchMachine scratch;
  return TakeIn(Child(scratch, call).Answer(scratch.Signals()), scratch);
}

const peers::EntryRecord* DefaultEntry(const peers::SettingFileContent& records) {
  const auto found = std::ranges::find(records.entries, "*", &peers::EntryRecord::printer);
  return found == records.entries.end() ? nullptr : &*found;
}

}  // namespace app
