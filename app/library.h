#pragma once

// The library as any host has it: loaded at run time from the host's own folder, its operations
// looked up by name.

#include <string>

#include "boundary/exports.h"

namespace app {

struct Exports {
  decltype(&SigilSettingReleaseWaterMark) release;
  decltype(&SigilSettingSetWaterMark) set;
  decltype(&SigilSettingUpdateWaterMarkSetting) update;
  decltype(&SigilSettingReleaseWaterMarkForService) releaseForService;
  decltype(&SigilSettingSetUseContentLog) setUseContentLog;
  decltype(&SigilSettingUpdateExcludePrinter) updateExclude;
};

/// Loads the library, which stays loaded. std::runtime_error when it or an operation is missing.
Exports LoadExports();

/// Where the host expects a library of this file name.
std::wstring BesideHost(const std::wstring& fileName);

}  // namespace app
