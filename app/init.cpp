#include "app/init.h"

#include <system_error>

#include "app/sample.h"
#include "app/usage_error.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

void RequireRoom(const fs::path& root) {
  std::error_code error;
  const auto status = fs::status(root, error);
  if (!fs::exists(status) && status.type() == fs::file_type::not_found) return;
  if (fs::is_directory(status) && fs::is_empty(root, error) && !error) return;
  throw UsageError(root.string() + ": not an empty folder");
}

void Write(const fs::path& file, std::string bytes) {
  fs::create_directories(file.parent_path());
  platform::ChangeWholeFile(file, [&](const auto&) { return bytes; });
}

}  // namespace

void LayOutMachine(const fs::path& root) {
  RequireRoom(root);
  const fs::path client = root / "C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge";
  Write(client / "config/Client.ini", sample::kClientIni);
  Write(client / "config/data.dat", sample::kKeySource);
  Write(client / "EMS/SystemSetting.csv", sample::kSystemSetting);
  fs::create_directories(root / "C/Users/tanaka/AppData/LocalLow");
  Write(root / "policy.xml", sample::kPolicy);
  Write(root / "machine.ini", sample::kMachine);
}

}  // namespace app
