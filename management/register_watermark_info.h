#pragma once

#include "component/operation_sigil_settings.h"
#include "platform/spooler.h"

namespace SigilSettingManagement {

/// Registers the policy on the default entry and on each printer of the list that uses the suite's
/// own driver. Each record is rebuilt and saved; a failed save is not noticed. The caller has
/// opened and locked `settings`. Returns 0 when the walk ran to its end, also where single entries
/// failed; -1 when `printers` is null, -2 when the document was refused, -3 when an exception ended
/// the walk. Throws if the reader cannot be created.
int RegisterWatermarkInfo(int policyId, const wchar_t* policyXml, OperationSigilSettings& settings,
                          const PRINTER_INFO_2W* printers, DWORD printerCount);

}  // namespace SigilSettingManagement
