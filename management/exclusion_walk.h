#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"
#include "logging/log.h"

namespace SigilSettingManagement {

/// The messages of a pass for the walk. `checking` takes the printer's index and name. One of the
/// others follows for a printer that does not use the suite's driver.
struct ExclusionWalkMessages {
  LogMessage checking;
  LogMessage noComment;
  LogMessage notMonitored;
  LogMessage monitored;
};

/// Puts each printer that is neither the suite's nor monitored on the emptied exclude list of the
/// locked component. The caller saves.
void ExcludePrinters(const CPrinterList& printers, const ExclusionWalkMessages& messages,
                     OperationSigilSettings& settings);

}  // namespace SigilSettingManagement
