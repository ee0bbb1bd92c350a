#include "app/rehearsal/rehearse.h"

#include <algorithm>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>

#include "app/machine/user_file.h"
#include "app/pass/messages.h"
#include "app/text/errors.h"
#include "app/text/input.h"
#include "app/text/json.h"
#include "app/text/table.h"

namespace app {
namespace {

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
    throw std::runtime_error("the scratch machine in " + scratch.Folder().parent_path().string() +
                             " could not be saved");
}

}  // namespace

std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call) try {
  scratch.Enter();
  LayUserFile();  // as the command `update` does
  const Outcome outcome = Call(UpdateCall(call.text, call.policyId, call.resetName));
  Json answer = WalkOf(outcome);
  answer["result"] = outcome.result;
  answer["file"] = peers::FindSettingPlace().file.string();
  answer["troubles"] = Json::array();
  for (const Message& trouble : Troubles(outcome.messages))
    answer["troubles"].push_back(JsonOf(trouble));
  const bool isTried = outcome.result != SIGIL_SETTING_FAILED;
  answer["undelivered"] = isTried ? scratch.WhyUndelivered(call.text) : "";
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
  rehearsal.records = peers::ReadSettingFile(PathOf(told.at("file").get<std::string>()));
  rehearsal.registered = Match(told.at("walk"), rehearsal.records);
  rehearsal.hasUnread = told.at("hasUnread");
  rehearsal.undelivered = told.at("undelivered");
  RequireSaved(rehearsal, told.at("guids"), scratch);
  return rehearsal;
}

Rehearsal Rehearse(const PolicyCall& call) {
  const ScratchMachine scratch;
  return TakeIn(scratch.Ask(call), scratch);
}

const peers::EntryRecord* DefaultEntry(const peers::SettingFileContent& records) {
  const auto found = std::ranges::find(records.entries, "*", &peers::EntryRecord::printer);
  return found == records.entries.end() ? nullptr : &*found;
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
