#pragma once

#include "component/sigil_interfaces.h"

/// Deletes the watermarks of `record`. Reads all GUIDs first, because each deletion moves the
/// indexes of the others. A watermark whose GUID cannot be read stays.
void DeleteWatermarks(Sigil::PrinterSettings& record);
