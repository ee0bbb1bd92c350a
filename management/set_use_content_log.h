#pragma once

namespace SigilSettingManagement {

/// Stores whether the Settings component calls its print-content log callback. Returns 0 when
/// the switch was set and the save attempted, also where it failed; -1 without a component
/// instance, -3 after an exception, -99 without the mutex.
int SetUseContentLog(bool useContentLog);

}  // namespace SigilSettingManagement
