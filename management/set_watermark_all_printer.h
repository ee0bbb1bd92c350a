#pragma once

namespace SigilSettingManagement {

/// Switches watermarking on or off for the default entry and for every printer of the suite's own
/// driver, as the scope of the delivered policy says. With `service` a switch that disables also
/// deletes the entry's watermarks. 0 all went through; above 0 the number of printers whose switch
/// failed; -1 no printer list; -2 no component instance; -3 an exception; -4 no scope; -99 no
/// mutex.
int SetWatermarkAllPrinter(bool enable, bool service);

}  // namespace SigilSettingManagement
