#pragma once

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// The display name of the account under which the process runs: from a domain controller on a
/// joined machine, from the local accounts everywhere else and whenever that fails. Each is asked
/// once, and the caller's thread waits for the answer.
///
/// True when an account record gave a name, an empty one included. `domainController` is set only
/// when the name came from that controller. Throws nothing; the log tells the failures.
bool GetUserFullName(CString& fullName, CString& domainController);

}  // namespace SigilSettingManagement
