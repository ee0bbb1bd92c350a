#include "app/rehearsal/rehearse.h"

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "app/machine/client.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/files.h"
#include "app/text/table.h"

namespace app {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Message, level, number, function, text)
// Without the records, which the parent reads from the file.
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Rehearsal, error, result, messages, undelivered, file)

namespace {

bool IsSaved(const Rehearsal& rehearsal) {
  std::set<std::string> saved;
  for (const peers::EntryRecord& entry : rehearsal.records.entries)
    for (const peers::WatermarkRecord& mark : entry.watermarks) saved.insert(mark.id);
  return std::ranges::all_of(rehearsal.messages, [&](const Message& message) {
    const auto made = MadeMarkIn(message);
    return made ? saved.contains(made->guid) : MeaningOf(message).weight != Weight::kUnsaved;
  });
}

/// Keeps the messages that a rehearsal has, and of unread texts the first alone, because a policy
/// may have a million of them.
MessageFilter OfRehearsal() {
  return [hasUnread = false](const Message& message) mutable {
    if (message.level >= kTroubleLevel) return true;
    const Step step = StepOf(message);
    return step == Step::kUnread ? !std::exchange(hasUnread, true) : step != Step::kOther;
  };
}

Rehearsal HoldRehearsal(const ScratchMachine& scratch, const PolicyCall& call) try {
  scratch.Enter();
  LayUserFile();  // as the command `update` does
  Outcome outcome = Call(UpdateCall(call), OfRehearsal());
  Rehearsal held = {.result = outcome.result, .file = peers::FindSettingPlace().file.string()};
  if (held.result != SIGIL_SETTING_FAILED) held.undelivered = scratch.WhyUndelivered(call.text);
  held.messages = std::move(outcome.messages);
  return held;
} catch (const std::exception& error) {
  return {.error = CauseOf(error)};
}

}  // namespace

std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call) {
  return nlohmann::json(HoldRehearsal(scratch, call))
      .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

Rehearsal TakeIn(const std::string& answer, const ScratchMachine& scratch) {
  const auto json = nlohmann::json::parse(answer, nullptr, false);
  if (!json.is_object()) throw std::runtime_error("the rehearsal ended without an answer");
  auto rehearsal = json.get<Rehearsal>();
  if (!rehearsal.error.empty()) throw std::runtime_error(rehearsal.error);
  rehearsal.records = peers::ReadSettingFile(PathOf(rehearsal.file));
  // On Windows the mutex is the machine's own. The command ends here, because its own pass would
  // wait for it as long again.
  const auto missed = std::ranges::find_if(rehearsal.messages, MissesMutex);
  if (missed != rehearsal.messages.end()) throw std::runtime_error(MeaningOf(*missed).sentence);
  // A scratch machine that is not saved is no fault of the policy's.
  if (!IsSaved(rehearsal))
    throw std::runtime_error("the scratch machine in " + scratch.Folder().parent_path().string() +
                             " could not be saved");
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
