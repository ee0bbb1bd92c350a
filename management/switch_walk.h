#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"

namespace SigilSettingManagement {

/// The walk of SetWatermarkAllPrinter, logged in its name: switches the default entry and the
/// suite's printers in the locked component. With `enable` the entries in `scope` go on and the
/// others off; without it all go off. With `service` an entry that goes off also loses its
/// watermarks.
///
/// Each entry is saved by itself, and a failed one stops none of the others. Returns the number of
/// printers whose switch failed; a failure of the default entry or of a deletion does not count.
int SwitchEntries(OperationSigilSettings& settings, const CPrinterList& printers, int scope,
                  bool enable, bool service);

}  // namespace SigilSettingManagement
