#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/machine/home.h"
#include "app/machine/user_file.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/machine_file.h"

namespace app {

std::optional<std::wstring> SettingFolder() {
  return peers::FindSettingPlace().folder;
}

void LayUserFile(const std::wstring& file) {
  const platform::Descriptor opened = platform::Open(HostPath(file), O_WRONLY | O_CREAT);
  struct stat status = {};
  if (!opened || fstat(opened.Get(), &status) != 0 || status.st_size != 0) return;
  // A failure leaves the file empty, as it was.
  [[maybe_unused]] const ssize_t written = write(opened.Get(), "\xFF\xFE", 2);
}

}  // namespace app
