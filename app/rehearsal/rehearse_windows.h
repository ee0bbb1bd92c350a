#pragma once

namespace app {

/// The command by which a rehearsal's process is started, in the rehearsal's folder.
inline constexpr char kRehearse[] = "rehearse";
int RunRehearsal();

}  // namespace app
