#pragma once

#include "component/sigil_interfaces.h"

/// Deletes the watermarks of `record`: all GUIDs are read first, since each deletion moves the
/// indexes of the others. One whose GUID the component does not tell stays.
void DeleteWatermarks(Sigil::PrinterSettings& record);
