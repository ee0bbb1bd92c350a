#include "app/rehearsal/rehearse.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

#include "app/machine/client.h"
#include "app/machine/settings.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "app/text/table.h"

namespace app {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Message, level, number, function, text)

namespace {

/// The child's answer, as JSON on its way.
struct Answer {
  std::string error = {};  ///< Why the child held no rehearsal; then there is nothing else.
  int result = 0;
  std::string file = {};  ///< The scratch's setting file.
  std::vector<Message> troubles = {};
  std::vector<Message> walk = {};       ///< Of the default entry's elements, one message of each.
  std::vector<std::string> guids = {};  ///< Of the watermarks of all entries.
  bool hasUnread = false;
  std::string undelivered = {};
};
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Answer, error, result, file, troubles, walk, guids, hasUnread,
                                   undelivered)

void ReadMessages(const std::vector<Message>& messages, Answer& answer) {
  std::size_t entries = 0;
  for (const Message& message : messages) {
    const Step step = StepOf(message);
    if (step == Step::kEntry) ++entries;
    if (step == Step::kUnread) answer.hasUnread = true;
    if (const auto made = MadeMarkIn(message)) answer.guids.push_back(made->guid);
    if (entries <= 1 && (step == Step::kMade || step == Step::kDropped))
      answer.walk.push_back(message);
  }
  answer.troubles = Troubles(messages);
}

std::vector<Registered> Match(const std::vector<Message>& walk,
                              const peers::SettingFileContent& records) {
  std::map<std::string, const peers::WatermarkRecord*> marks;
  if (const auto* entry = FindEntry(records, "*"))
    for (const peers::WatermarkRecord& mark : entry->watermarks) marks[mark.id] = &mark;
  std::vector<Registered> all;
  for (const Message& message : walk) {
    const auto made = MadeMarkIn(message);
    const auto mark = made ? marks.find(made->guid) : marks.end();
    Registered& registered = all.emplace_back();
    if (!made) registered.reason = message;
    if (mark != marks.end()) registered.mark = *mark->second;
    registered.isStamp = made && made->isStamp;
  }
  return all;
}

/// Throws if the pass did not get the mutex, which is the machine's on Windows. Else the command's
/// own pass would wait for it as long again.
void RequireMutex(const Rehearsal& rehearsal) {
  const auto missed = std::ranges::find_if(rehearsal.troubles, MissesMutex);
  if (missed != rehearsal.troubles.end()) throw std::runtime_error(MeaningOf(*missed).sentence);
}

/// Throws if the scratch machine was not saved; else the policy would be blamed.
void RequireSaved(const Rehearsal& rehearsal, const std::vector<std::string>& guids,
                  const ScratchMachine& scratch) {
  std::set<std::string> saved;
  for (const peers::EntryRecord& entry : rehearsal.records.entries)
    for (const peers::WatermarkRecord& mark : entry.watermarks) saved.insert(mark.id);
  const bool isSaved =
      std::ranges::all_of(guids, [&](auto& guid) { return saved.contains(guid); }) &&
      std::ranges::none_of(rehearsal.troubles, [](const Message& message) {
        return MeaningOf(message).weight == Weight::kUnsaved;
      });
  if (!isSaved)
    throw std::runtime_error("the scratch machine in " + scratch.Folder().parent_path().string() +
                             " could not be saved");
}

Answer Answered(const ScratchMachine& scratch, const PolicyCall& call) try {
  scratch.Enter();
  LayUserFile();  // as the command `update` does
  const Outcome outcome = Call(UpdateCall(call.text, call.policyId, call.resetName));
  Answer answer = {.result = outcome.result, .file = peers::FindSettingPlace().file.string()};
  ReadMessages(outcome.messages, answer);
  if (outcome.result != SIGIL_SETTING_FAILED)
    answer.undelivered = scratch.WhyUndelivered(call.text);
  return answer;
} catch (const std::exception& error) {
  return {.error = CauseOf(error)};
}

}  // namespace

std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call) {
  return nlohmann::json(Answered(scratch, call))
      .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Rehearsal TakeIn(const std::string& bytes, const ScratchMachine& scratch) {
  const auto json = nlohmann::json::parse(bytes, nullptr, false);
  if (!json.is_object()) throw std::runtime_error("the rehearsal ended without an answer");
  auto answer = json.get<Answer>();
  if (!answer.error.empty()) throw std::runtime_error(answer.error);
  Rehearsal rehearsal;
  rehearsal.result = answer.result;
  rehearsal.troubles = std::move(answer.troubles);
  rehearsal.records = peers::ReadSettingFile(PathOf(answer.file));
  rehearsal.registered = Match(answer.walk, rehearsal.records);
  rehearsal.hasUnread = answer.hasUnread;
  rehearsal.undelivered = answer.undelivered;
  RequireMutex(rehearsal);
  RequireSaved(rehearsal, answer.guids, scratch);
  return rehearsal;
}

Rehearsal Rehearse(const PolicyCall& call) {
  const ScratchMachine scratch;
  return TakeIn(scratch.Ask(call), scratch);
}

Progress::~Progress() {
  if (!m_line.empty()) std::cerr << "\r" << std::string(m_line.size(), ' ') << "\r" << std::flush;
}

void Progress::Tick() {
  const auto passed = std::chrono::steady_clock::now() - m_start;
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(passed).count();
  std::string line = "rehearsing: " + std::to_string(seconds) + " s ...";
  if (!IsTerminal(stderr) || seconds == 0 || line == m_line) return;
  m_line = std::move(line);
  std::cerr << "\r" << m_line << std::flush;
}

}  // namespace app
