#pragma once

// The calls of the real library that a policy would meet, on a scratch machine.
//
// An update with the policy, and then, on a bare machine, set with it as the delivered policy. Both
// run in one child process, because whatever a policy does to the library must happen there.

#include <optional>
#include <string>
#include <vector>

#include "app/pass/pass.h"
#include "app/rehearsal/scratch_machine.h"
#include "peers/settings_component/setting_file.h"

namespace app {

struct PolicyCall {
  const std::wstring& text;
  int policyId = 1;
  bool resetName = false;
};

/// What the update has made of one ID of the policy's list, as the default entry has it.
struct Registered {
  std::optional<peers::WatermarkRecord> mark;  ///< Nothing when the element was dropped.
  std::optional<Message> reason;               ///< The message that says why it was dropped.
  bool isStamp = false;
};

struct Rehearsal {
  int result = 0;
  std::vector<Message> troubles;       ///< Of the update, each once.
  peers::SettingFileContent records;   ///< What the scratch's setting file holds after it.
  std::vector<Registered> registered;  ///< In the order of the list.
  bool hasUnread = false;              ///< The reader failed to answer a query.
  std::string undelivered;             ///< Why set refuses the policy; empty when it does not.
};

/// Throws std::runtime_error when no rehearsal can be held: there is no scratch machine, the child
/// ends without an answer, or the scratch machine is not saved. A signal that ends this process
/// does so at once, and the scratch goes.
Rehearsal Rehearse(const PolicyCall& call);

/// The two halves of Rehearse: the work of the child, with its answer, and what it tells.
std::string AnswerOf(const ScratchMachine& scratch, const PolicyCall& call);
Rehearsal TakeIn(const std::string& answer, const ScratchMachine& scratch);

/// The default entry's record; null when there is none.
const peers::EntryRecord* DefaultEntry(const peers::SettingFileContent& records);

}  // namespace app
