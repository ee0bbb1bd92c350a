#pragma once

// The system-wide mutex `Global\MIMOSA_HLE_SIGIL_SETTING`, which every user of the setting file in
// every process takes before it opens the Settings component to change anything.

#include "platform/owner.h"
#include "platform/security.h"

/// Waits up to 180 seconds for the mutex. Returns its handle, which the caller gives back with
/// GiveBackMutex. Returns null on failure, which is logged, and for a mutex whose owner died; that
/// one is released, so that the next caller can take it.
HANDLE GetMutex_SigilSetting(SECURITY_ATTRIBUTES* attributes);

/// Gives the mutex up and closes its handle.
void GiveBackMutex(HANDLE mutex);

using CSettingMutex = Owner<HANDLE, GiveBackMutex>;
