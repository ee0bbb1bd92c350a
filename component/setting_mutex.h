#pragma once

// The system-wide mutex `Global\MIMOSA_HLE_SIGIL_SETTING`, which every user of the setting file in
// every process takes before it opens the Settings component to change anything.

#include "platform/owner.h"
#include "platform/security.h"

/// Waits up to 180 seconds for the mutex. Gives its handle, with which the caller owns the mutex
/// and has to give it back, or null: the mutex could not be had, and the log says so. A mutex whose
/// owner died counts as not had too, and is free again for the next caller.
HANDLE GetMutex_SigilSetting(SECURITY_ATTRIBUTES* attributes);

/// Gives the mutex up and closes its handle.
void GiveBackMutex(HANDLE mutex);

using CSettingMutex = Owner<HANDLE, GiveBackMutex>;
