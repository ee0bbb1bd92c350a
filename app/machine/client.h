#pragma once

// The client's installation on the machine, as its administrator finds it: where its files are, and
// the watermark function's switch.

#include <optional>
#include <string>
#include <vector>

namespace app {

std::wstring ClientIni();
/// The file that the policy file's key comes from.
std::wstring KeySource();

struct DeliveryFolder {
  std::wstring path;
  std::string origin;  ///< Where the path comes from, and why from there.

  std::wstring PolicyFile() const;
  std::wstring SystemSetting() const;
};

DeliveryFolder FindDeliveryFolder();

/// All of them: Client.ini, the key source and what the delivery folder holds.
std::vector<std::wstring> ClientFiles();

/// The watermark function's switch: item kWatermarkKey of SystemSetting.csv, as the passes read it.
struct FunctionSwitch {
  /// The number in the item's last row above the first empty line; 0 without such a row. Null when
  /// the file cannot be opened.
  std::optional<int> value;
  std::string state;  ///< "on: item 63 is 1", "off: no row has the key 63", ...
};
FunctionSwitch ReadFunctionSwitch(const std::wstring& file);

}  // namespace app
