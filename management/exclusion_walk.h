#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"
#include "logging/log.h"

namespace SigilSettingManagement {

/// How a pass logs the walk: `checking` takes the printer's index and name, the others tell what
/// was found of a printer that is not the suite's.
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
