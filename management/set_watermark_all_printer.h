#pragma once

namespace SigilSettingManagement {

/// Switches watermarking on or off for the default entry and for every printer of the suite's own
/// driver, as the scope of the delivered policy says. With `service` an entry that goes off also
/// loses its watermarks. Returns 0 when all went through, above 0 the number of printers whose
/// switch failed; -1 without a printer list, -2 without a component instance, -3 after an
/// exception, -4 when the delivered file gives no scope (ReadDeliveredScope), -99 without the
/// mutex. -1, -2, -4 and -99 come before anything is changed.
int SetWatermarkAllPrinter(bool enable, bool service);

}  // namespace SigilSettingManagement
