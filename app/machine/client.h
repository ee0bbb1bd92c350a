#pragma once

// The client's installation on the machine, as its administrator finds it: where its files are, the
// watermark function's switch, and the file with the user's full name.

#include <string>
#include <vector>

namespace app {

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
  /// The number in the item's last row above the first empty line; 0 without such a row, and -1
  /// also when the file cannot be opened.
  int value = -1;
  std::string state;  ///< "on: item 63 is 1", "off: no row has the key 63", ...
};
FunctionSwitch ReadFunctionSwitch(const std::wstring& file);

/// The user information file, in which the library keeps the user's full name.
struct UserFile {
  std::wstring path;  ///< Empty when the folder is unknown.
  std::string state;  ///< For people.
  bool hasFullName = false;
  std::string fullName;
};
UserFile ExamineUserFile();

/// Lays the user information file, with the mark of UTF-16 alone, where it is missing or empty. A
/// host does so before its first update, because the call that makes the file otherwise writes it
/// in the ANSI code page, where a letter outside of that page becomes another one or '?'. Says
/// nothing of failures, because the pass meets them too.
void LayUserFile();

}  // namespace app
