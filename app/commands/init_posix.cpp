#include <stdlib.h>

#include <cerrno>
#include <system_error>

#include "app/commands/init.h"
#include "app/machine/sample.h"
#include "app/text/usage_error.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// The folder is made, or is there, empty and the caller's own. Nobody else may have laid it out.
void TakeRoom(const fs::path& root) {
  std::error_code error;
  fs::create_directories(root.parent_path(), error);  // shows at the next step
  if (mkdir(root.c_str(), 0700) != 0 && errno != EEXIST)
    throw UsageError(root.string() + ": " + std::system_category().message(errno));
  struct stat status = {};
  const bool isFolder = lstat(root.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  if (isFolder && status.st_uid != geteuid())
    throw UsageError(root.string() + ": another account's folder");
  if (!isFolder || !fs::is_empty(root, error) || error)
    throw UsageError(root.string() + ": not an empty folder");
  if (chmod(root.c_str(), 0700) != 0)
    throw std::system_error(errno, std::generic_category(), root.string());
}

void Write(const fs::path& file, std::string bytes) {
  platform::OpenFolder(file.parent_path(), platform::Missing::kIsMade);
  platform::ChangeWholeFile(file, [&](const auto&) { return bytes; });
}

}  // namespace

void LayOutMachine(const fs::path& folder) {
  if (folder.empty()) throw UsageError("init: a folder, not an empty text");
  const fs::path root = fs::absolute(folder / "").parent_path();
  TakeRoom(root);
  setenv("SIGIL_ROOT", root.c_str(), 1);  // from here on it is the machine
  const fs::path client = root / "C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge";
  Write(client / "config/Client.ini", sample::kClientIni);
  Write(client / "config/data.dat", sample::kKeySource);
  Write(client / "EMS/SystemSetting.csv", sample::kSystemSetting);
  platform::OpenFolder(root / "C/Users/tanaka/AppData/LocalLow", platform::Missing::kIsMade);
  Write(root / "policy.xml", sample::kPolicy);
  Write(root / "machine.ini", sample::kMachine);
}

}  // namespace app
