#pragma once

// The user information file, UserInfoWM.ini in the setting folder: the user's full name once a
// lookup has found it, the login name until then, and whether a lookup has succeeded since the last
// reset. Each function opens a component handle of its own to learn the folder, without any lock.
// None throws; the log tells the failures. After an exception the result is what had been reached.

#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Looks the full name up and stores it, unless that has succeeded before. `name` is the name to
/// use: the full name, else the stored one, else the login name; it stays as it was when nothing
/// was looked up. True when a full name was found, now or before.
bool PrepareUserFullName(CString& name);

/// `name` is the stored full name, else the stored login name, else the process's login name. True
/// for the first. Empty and false when the component cannot be had.
bool GetUserFullName(CString& name);

/// Has the next PrepareUserFullName look the name up anew; the stored name stays.
void InitializeFullNameState();

/// Not 0 when a lookup has succeeded; 0 otherwise and on any failure.
int GetFullNameState();

}  // namespace SigilSettingManagement
