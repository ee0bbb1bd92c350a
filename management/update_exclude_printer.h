#pragma once

namespace SigilSettingManagement {

/// Rebuilds the exclude list from the printers that exist now. Returns 0 when the walk ran
/// through and the save was attempted, also where it failed; -1 without a printer list, -2 without
/// a component instance, -3 after an exception, -99 without the mutex. The emptied list is saved
/// before the walk begins, so a failure after that leaves it empty or partly filled.
int UpdateExcludePrinter();

}  // namespace SigilSettingManagement
