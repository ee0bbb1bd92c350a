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

/// The value of its last row before the first empty one; 0 without any. Nothing when the file
/// cannot be opened.
std::optional<int> ReadFunctionSwitch(const std::wstring& file);

}  // namespace app
