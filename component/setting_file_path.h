#pragma once

#include "component/sigil_interfaces.h"

/// The path of the component's setting file, below the user's LocalAppDataLow folder. Deleting
/// single settings has to name the file, and the component tells its folder alone. `*length` is the
/// capacity of `target` in characters and becomes the length needed, terminator included. Gives
/// kSuccess, also for a null `target`, or kTargetTooSmall: then `target` holds as much as fits.
Sigil::SigilResult GetSettingFilePath(wchar_t* target, std::uint32_t* length);
