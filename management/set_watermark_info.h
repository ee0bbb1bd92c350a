#pragma once

#include "component/sigil_interfaces.h"
#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Rebuilds one record from the loaded policy: its watermarks are deleted, one is made for each
/// element of the policy, and its custom setting and its last setting are told which are active.
/// Out of scope the new watermarks are there but inactive. The caller commits, saves and releases
/// the record, also after -2: an exception came, and the record is in the state that it has
/// reached. 0 otherwise.
int SetWatermarkInfo(int policyId, Sigil::PrinterSettings& printerSettings, bool outOfScope);

/// Deletes the record's watermarks; an exception is logged and ends it.
void DeleteWatermarkInfoALL(Sigil::PrinterSettings& printerSettings);

/// Makes the watermark of one element by the mapping of its kind. True: it is made and `*id` is its
/// GUID. False, without a watermark: an unknown kind, a failed mapping, an exception.
bool SetSortingWatermarkInfo(const CString& elementId, Sigil::PrinterSettings& printerSettings,
                             GUID* id);

}  // namespace SigilSettingManagement
