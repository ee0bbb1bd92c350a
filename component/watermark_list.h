#pragma once

#include "component/sigil_interfaces.h"

/// Deletes the watermarks of `record`: all GUIDs are read first, since each deletion moves the
/// indexes of the others. One whose GUID cannot be read is left in place.
void DeleteWatermarks(Sigil::PrinterSettings& record);
