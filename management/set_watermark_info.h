#pragma once

#include "component/sigil_interfaces.h"
#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Rebuilds one record from the loaded policy: deletes its watermarks, makes one for each element
/// of the policy, and lists them in its custom setting and its last setting. Out of scope both
/// settings are switched off and keep their lists. Returns 0, or -2 after an exception, which
/// leaves the record half rebuilt. The caller commits, saves and releases the record in both cases.
int SetWatermarkInfo(int policyId, Sigil::PrinterSettings& printerSettings, bool outOfScope);

/// Deletes the record's watermarks; an exception is logged and ends it.
void DeleteWatermarkInfoALL(Sigil::PrinterSettings& printerSettings);

/// Makes the watermark of one element by the mapping of its kind. Returns true when it is made,
/// with its GUID in `*id`; false for an unknown kind, a failed mapping and an exception.
bool SetSortingWatermarkInfo(const CString& elementId, Sigil::PrinterSettings& printerSettings,
                             GUID* id);

}  // namespace SigilSettingManagement
