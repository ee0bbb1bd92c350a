#pragma once

// One element of the loaded policy becomes one new watermark of a record. Each property is read,
// converted, clamped to its bounds and passed on before the next is read. No value of the document
// ends a mapping, and the component's results for single properties are not looked at. The caller
// has loaded the policy, and commits and saves the record.

#include "component/sigil_interfaces.h"
#include "platform/mfc.h"

namespace SigilSettingManagement {

/// Maps a header or footer. Returns true when the watermark stands in the record, with its GUID in
/// `*id`; false without an ID, a record or a watermark of the component. Exceptions go to the
/// caller.
bool SetHeaderFooterInfo(const CString& elementId, Sigil::PrinterSettings* printerSettings,
                         GUID* id);

/// Maps a stamp likewise.
bool SetStampInfo(const CString& elementId, Sigil::PrinterSettings* printerSettings, GUID* id);

}  // namespace SigilSettingManagement
