#include "app/log_view.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "app/client.h"
#include "app/usage_error.h"
#include "peers/descriptor.h"
#include "platform/posix/machine/machine.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// A file that is printed up to its end, again and again.
class Tail {
 public:
  explicit Tail(fs::path file) : m_path(std::move(file)) {}

  /// False when there is no file.
  bool Print() {
    struct stat now = {};
    if (stat(m_path.c_str(), &now) != 0) return false;
    if (!m_file || !IsStill(now)) m_file = Open();
    char block[0x4000];
    for (ssize_t size; (size = read(m_file.Get(), block, sizeof block)) != 0;) {
      if (size < 0 && errno != EINTR) peers::ThrowSystemError(m_path.string());
      if (size > 0) std::fwrite(block, 1, static_cast<std::size_t>(size), stdout);
    }
    if (std::fflush(stdout) != 0) peers::ThrowSystemError("standard output");
    return true;
  }

 private:
  peers::Descriptor Open() const {
    peers::Descriptor file(open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file) peers::ThrowSystemError(m_path.string());
    return file;
  }

  bool IsStill(const struct stat& now) const {
    struct stat own = {};
    return fstat(m_file.Get(), &own) == 0 && own.st_ino == now.st_ino && own.st_dev == now.st_dev &&
           own.st_size >= lseek(m_file.Get(), 0, SEEK_CUR);
  }

  fs::path m_path;
  peers::Descriptor m_file;
};

}  // namespace

fs::path LogFile() {
  const char* named = std::getenv("SIGIL_LOG");
  return named == nullptr || *named == '\0' ? platform::HostPath(kLogFile) : fs::path(named);
}

void PrintLog(const fs::path& file) {
  if (!Tail(file).Print()) throw UsageError(file.string() + ": there is no log yet");
}

void FollowLog(const fs::path& file) {
  constexpr std::chrono::milliseconds kPause(100);
  for (Tail tail(file);; std::this_thread::sleep_for(kPause)) tail.Print();
}

}  // namespace app
