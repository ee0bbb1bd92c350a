#pragma once

#include "component/sigil_interfaces.h"

/// Writes the path of the component's setting file, below the user's LocalAppDataLow folder, to
/// `target`. A deletion of a single setting has to name the file, while the component gives only
/// its folder. `*length` is the capacity of `target` in characters and becomes the length needed,
/// terminator included. Returns kSuccess, also for a null `target`, or kTargetTooSmall, with as
/// much of the path in `target` as fits.
Sigil::SigilResult GetSettingFilePath(wchar_t* target, std::uint32_t* length);
