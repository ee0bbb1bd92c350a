#pragma once

// The user information file, UserInfoWM.ini in the setting folder: the user's full name once a
// lookup has found it, the login name until then, and whether a lookup has succeeded since the last
// reset. Each function opens its own component handle to learn the folder, without any lock. None
// throws; failures are logged. After an exception the result is the one reached before it.

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Looks the full name up and stores it, unless that has succeeded before. `name` is the name to
/// use: the full name, else the stored one, else the login name; it stays as it was when nothing
/// was looked up. True when a full name was found, now or before.
bool PrepareUserFullName(CString& name);

/// `name` becomes the stored full name, else the stored login name, else the process's login name.
/// Returns true for the first. Without the component `name` is empty and the result false.
bool GetUserFullName(CString& name);

/// Makes the next PrepareUserFullName look the name up anew; the stored name stays.
void InitializeFullNameState();

/// Returns 0 until a lookup has succeeded, and on any failure.
int GetFullNameState();

}  // namespace SigilSettingManagement
