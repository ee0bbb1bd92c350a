#pragma once

// One call of the real library on a scratch machine.

#include "app/pass/library.h"
#include "app/rehearsal/scratch_machine.h"
#include "peers/settings_component/setting_file.h"

namespace app {

struct Rehearsal {
  Outcome outcome;
  peers::SettingFileContent records;  ///< What the scratch machine's setting file holds afterwards.
};

/// Makes the call in a process of its own, whose machine is the scratch: whatever a policy does to
/// the library happens there. std::runtime_error when that process ends without an outcome.
Rehearsal Rehearse(const ScratchMachine& machine, const ExportCall& call);

}  // namespace app
