#include <stdlib.h>

#include <cerrno>
#include <iostream>
#include <system_error>

#include "app/commands/command_line.h"
#include "app/text/errors.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/visible_text.h"

namespace app {

// The files of app/sample, which CMake embeds.
extern const char kSampleMachine[];
extern const char kSamplePolicy[];

namespace {

namespace fs = std::filesystem;

constexpr char kClientIni[] =
    "[Setting]\r\nEMSDir=C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\EMS\r\n";
// 32 bytes: every digit of the digest goes into the key.
constexpr char kKeySource[] = "sample key source of a test host";
constexpr char kSystemSetting[] = "63,1\r\n500,0\r\n";

/// The folder is made, or is there, empty and the caller's own. Nobody else may have laid it out.
void TakeRoom(const fs::path& root) {
  std::error_code error;
  platform::OpenFolder(root.parent_path(), platform::Missing::kIsMade);  // shows at the next step
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

void Write(const fs::path& file, std::string_view bytes) {
  platform::OpenFolder(file.parent_path(), platform::Missing::kIsMade);
  platform::ReplaceWholeFile(file, bytes);
}

/// Lays out the machine and its client in `folder`, and a policy beside them. Throws UsageError
/// when the folder is there, unless it is empty and the caller's own.
void LayOutMachine(const fs::path& folder) {
  if (folder.empty()) throw UsageError("init: a folder, not an empty text");
  const fs::path root = fs::absolute(folder / "").parent_path();
  TakeRoom(root);
  setenv("SIGIL_ROOT", root.c_str(), 1);  // from here on it is the machine
  const fs::path client = root / "C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge";
  Write(client / "config/Client.ini", kClientIni);
  Write(client / "config/data.dat", kKeySource);
  Write(client / "EMS/SystemSetting.csv", kSystemSetting);
  platform::OpenFolder(root / "C/Users/tanaka/AppData/LocalLow", platform::Missing::kIsMade);
  Write(root / "policy.xml", kSamplePolicy);
  Write(root / "machine.ini", kSampleMachine);
}

}  // namespace

void AddInit(CommandLine& line) {
  const auto folder = std::make_shared<std::string>();
  CLI::App& command =
      line.AddWithoutMachine("init", "Lays out a sample machine with a sample policy", [folder] {
        LayOutMachine(*folder);
        std::cout << "init: the sample machine is in " << platform::Visible(*folder) << "\n";
        return 0;
      });
  command.add_option("ROOT", *folder, "Its folder, new or empty")->type_name("")->required();
}

}  // namespace app
