#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>

#include <memory>

#include "app/machine/home.h"
#include "app/text/errors.h"
#include "peers/descriptor.h"
#include "peers/logging/log_path_posix.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"

namespace app {

namespace fs = std::filesystem;

namespace {

LogSource SourceOf(peers::Descriptor descriptor) {
  return [file = std::make_shared<peers::Descriptor>(std::move(descriptor))](char* block,
                                                                             std::size_t size) {
    ssize_t count;
    do count = read(file->Get(), block, size);
    while (count < 0 && errno == EINTR);
    if (count < 0) peers::ThrowSystemError("the log");
    return static_cast<std::size_t>(count);
  };
}

}  // namespace

const wchar_t kLibrary[] = L"libSigilSetting.so";
const wchar_t kLog[] = L"liblog4cxx.so";

const char kMendMutex[] = "`sigilctl doctor` tells why.";
const char kMendPrinters[] = "See to machine.ini.";
const char kMendAccount[] = "See to the account in machine.ini or the directory.";

const char kEnvironment[] =
    "Environment:\n"
    "  SIGIL_ROOT       the machine's folder; else sigil/machine in XDG_DATA_HOME,\n"
    "                   which is ~/.local/share where it is not set\n"
    "  SIGIL_LOG        the log file, in place of the machine's own\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n"
    "  TMPDIR           where policies are rehearsed, in private folders that go\n"
    "                   again; memory where it is not set\n";

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

LogSource OpenLog() {
  const fs::path file = logging::LogFile();
  peers::Descriptor opened = platform::Open(file, O_RDONLY, 0);  // of any kind, told below
  if (!opened && errno == ENOENT) throw UsageError(file.string() + ": there is no log yet");
  if (!opened) peers::ThrowSystemError(file.string());
  struct stat status = {};
  if (fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode))
    throw UsageError(file.string() + ": not a regular file");
  return SourceOf(std::move(opened));
}

/// The process becomes `tail -F`, which knows a new file by its name. Returns in a child, which
/// ends with the process that was asked to follow.
LogSource FollowLog() {
  const fs::path file = logging::LogFile();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) peers::ThrowSystemError("pipe");
  const pid_t printer = fork();
  if (printer < 0) peers::ThrowSystemError("fork");
  if (printer == 0) {
    close(ends[1]);
    return SourceOf(peers::Descriptor(ends[0]));
  }
  dup2(ends[1], STDOUT_FILENO);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDERR_FILENO);  // because it names the file each time another takes its place
  execlp("tail", "tail", "-n", "+1", "-s", "0.1", "-F", "--", file.c_str(), nullptr);
  peers::ThrowSystemError("tail");
}

}  // namespace app
