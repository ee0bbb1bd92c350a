#pragma once

// The watermark function's switch as the passes read it, item kWatermarkKey of SystemSetting.csv.

#include <optional>
#include <string>

namespace app {

/// The value of its last row before the first empty one; 0 without any. Nothing when the file
/// cannot be opened.
std::optional<int> ReadFunctionSwitch(const std::wstring& file);

}  // namespace app
