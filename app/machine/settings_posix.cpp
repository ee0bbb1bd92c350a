#include <stdexcept>
#include <system_error>

#include "app/machine/settings.h"

namespace app {

const bool kReadsValues = true;

peers::SettingFileContent ReadSettings() {
  const auto file = peers::FindSettingPlace().file;
  try {
    return peers::ReadSettingFile(file);
  } catch (const std::system_error&) {
    throw;  // It names the file.
  } catch (const std::exception& error) {
    throw std::runtime_error(file.string() + ": " + error.what());
  }
}

}  // namespace app
