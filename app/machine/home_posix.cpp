#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include "app/machine/home.h"
#include "app/text/errors.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"

namespace app {

namespace fs = std::filesystem;

const wchar_t kLibrary[] = L"libSigilSetting.so";
const wchar_t kLog[] = L"liblog4cxx.so";

const char kMendMutex[] = "`sigilctl doctor` tells why.";
const char kMendPrinters[] = "See to machine.ini.";
const char kMendAccount[] = "See to the account in machine.ini or the directory.";

std::vector<std::string> Arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

const bool kMachineIsFolder = true;

std::string HostName() {
  char name[HOST_NAME_MAX + 1] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "unknown";
}

void UseMachine(const std::string& folder) {
  if (folder.empty()) throw UsageError("--root: a folder, not an empty text");
  setenv("SIGIL_ROOT", folder.c_str(), 1);
}

void RequireMachine() {
  const fs::path root = platform::MachineRoot();
  const auto state = platform::ExamineRoot();
  std::error_code error;
  if (!state) throw UsageError(root.string() + ": no machine here; `sigilctl init` lays one out");
  if (!state->isOwn) {
    const auto user = platform::FindUser(state->owner);
    const std::string owner =
        user ? platform::ToUtf8(user->login) : "#" + std::to_string(state->owner);
    throw UsageError(root.string() + ": this machine belongs to " + owner +
                     "; run it as that account: sudo -u '" + owner + "' sigilctl --root '" +
                     root.string() + "' ...");
  }
  if (state->isOpenToOthers)
    throw UsageError(root.string() +
                     ": other accounts can write here; `chmod go-w` closes it to them");
  if (!fs::exists(root / "machine.ini", error))
    throw UsageError(root.string() +
                     ": no machine here, for want of a machine.ini; `sigilctl init` lays one out");
}

std::string MachineName() {
  return platform::MachineRoot().string();
}

fs::path HostPath(std::wstring_view windowsPath) {
  return platform::HostPath(windowsPath);
}

std::wstring BesideHost(const std::wstring& fileName) {
  const fs::path host = fs::read_symlink("/proc/self/exe");
  return platform::FromUtf8(host.parent_path().string()) + L"/" + fileName;
}

}  // namespace app
