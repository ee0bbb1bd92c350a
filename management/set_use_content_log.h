#pragma once

namespace SigilSettingManagement {

/// Stores whether the Settings component calls its print-content log callback. 0 the switch was set
/// and the save attempted; -1 no component instance; -3 an exception; -99 no mutex.
int SetUseContentLog(bool useContentLog);

}  // namespace SigilSettingManagement
