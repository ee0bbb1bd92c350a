#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"

namespace SigilSettingManagement {

/// The walk of SetWatermarkAllPrinter, logged in its name: switches the default entry and the
/// suite's printers in the locked component. With `enable` what is in `scope` goes on and the rest
/// off; without it all goes off. With `service` what goes off also loses its watermarks.
///
/// Each entry is saved by itself, and one that fails stops none of the others. Gives the number of
/// printers whose switch failed; a failure of the default entry or of a deletion does not count.
int SwitchEntries(OperationSigilSettings& settings, const CPrinterList& printers, int scope,
                  bool enable, bool service);

}  // namespace SigilSettingManagement
