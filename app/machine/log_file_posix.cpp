#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>

#include "app/machine/log_file.h"
#include "app/text/errors.h"
#include "peers/descriptor.h"
#include "peers/logging/log_path_posix.h"
#include "platform/posix/machine/machine_file.h"

namespace app {
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

LogSource OpenLog() {
  const std::filesystem::path file = logging::LogFile();
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
  const std::filesystem::path file = logging::LogFile();
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
