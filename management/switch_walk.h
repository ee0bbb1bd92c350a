#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"

namespace SigilSettingManagement {

/// Switches the default entry and the suite's printers in the locked component, for
/// SetWatermarkAllPrinter and logged in its name. With `enable` what is in `scope` goes on and the
/// rest off; without it all goes off. With `service` what goes off also loses its watermarks. Each
/// entry is saved by itself, and one that fails stops none of the others. The number of printers
/// whose switch failed; the default entry and a failed deletion do not count.
int SwitchEntries(OperationSigilSettings& settings, const CPrinterList& printers, int scope,
                  bool enable, bool service);

}  // namespace SigilSettingManagement
