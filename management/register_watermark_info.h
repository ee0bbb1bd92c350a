#pragma once

#include "component/operation_sigil_settings.h"
#include "platform/spooler.h"

namespace SigilSettingManagement {

/// Registers the policy on the default entry and on each printer of the list that uses the suite's
/// own driver, each in a record that is rebuilt and saved; whether the save succeeded is neither
/// looked at nor logged. The caller has opened and locked `settings`. Gives 0 when the walk ran to
/// its end, whatever became of single entries; -1 when `printers` is null, -2 when the document was
/// refused, -3 when an exception ended the walk. What the reader's creation throws goes to the
/// caller.
int RegisterWatermarkInfo(int policyId, const wchar_t* policyXml, OperationSigilSettings& settings,
                          const PRINTER_INFO_2W* printers, DWORD printerCount);

}  // namespace SigilSettingManagement
