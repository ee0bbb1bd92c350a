#pragma once

namespace SigilSettingManagement {

/// Rebuilds the exclude list from the printers that exist now. 0 the walk ran through and the save
/// was attempted; -1 no printer list; -2 no component instance; -3 an exception; -99 no mutex.
int UpdateExcludePrinter();

}  // namespace SigilSettingManagement
