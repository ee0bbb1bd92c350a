#pragma once

// The watermark function's switch, item "63" of SystemSetting.csv.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace app {

/// The fields of a row, by the file's own rules for quotes: inside quotes a comma is text and a
/// doubled quote is one; a quote between other characters, from the fourth on, stays; a row whose
/// quotes don't close is read over again and closes by that.
std::vector<std::wstring> RowFields(std::wstring_view row);

/// The value of the last such row before the first empty one; 0 without any. Nothing when the file
/// cannot be opened.
std::optional<int> ReadFunctionSwitch(const std::wstring& file);

}  // namespace app
