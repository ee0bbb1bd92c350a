#include <system_error>

#include "app/machine/home.h"
#include "app/machine/user_file.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/whole_file.h"

namespace app {

std::wstring SettingFolder() {
  return peers::FindSettingPlace().folder;
}

void LayUserFile(const std::wstring& file) {
  const std::filesystem::path path = HostPath(file);
  try {
    if (!platform::ReadWholeFile(path).value_or("").empty()) return;
    platform::ChangeWholeFile(path, [](const std::optional<std::string>& before) {
      return before.value_or("").empty() ? "\xFF\xFE" : *before;
    });
  } catch (const std::system_error&) {
    // The library goes on without it too.
  }
}

}  // namespace app
