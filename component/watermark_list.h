#pragma once

#include "component/sigil_interfaces.h"

/// Deletes the watermarks of `record`: all GUIDs are read first, then each is deleted. One whose
/// GUID the component does not tell stays.
void DeleteWatermarks(Sigil::PrinterSettings& record);
