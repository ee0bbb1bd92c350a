#pragma once

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// The display name of the account under which the process runs: from a domain controller on a
/// joined machine, from the local accounts everywhere else and whenever that fails. Each is asked
/// once, and the caller's thread waits for the answer.
///
/// Returns true when an account record gave a name, also an empty one. `domainController` is set
/// only when the name came from that controller. Throws nothing; failures are logged.
bool GetUserFullName(CString& fullName, CString& domainController);

}  // namespace SigilSettingManagement
