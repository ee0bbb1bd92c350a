#pragma once

#include "component/operation_sigil_settings.h"
#include "host/printers.h"

namespace SigilSettingManagement {

/// How a pass logs the walk; `checking` takes the printer's index and name.
struct ExclusionWalkMessages {
  LogMessage checking;
  ExclusionMessages test;
};

/// Puts each printer that is excluded on the emptied exclude list of the locked component.
void ExcludePrinters(const PrinterList& printers, const ExclusionWalkMessages& messages,
                     OperationSigilSettings& settings);

}  // namespace SigilSettingManagement
