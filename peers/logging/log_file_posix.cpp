#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>

#include "peers/logging/log_path_posix.h"
#include "platform/posix/machine/machine_file.h"

namespace logging {
namespace {

namespace fs = std::filesystem;

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// The path of the log file, worked out again only when what it depends on has changed.
class LogPath {
 public:
  const fs::path& Get() {
    std::string named = Variable("SIGIL_LOG");
    std::string root = Variable("SIGIL_ROOT");
    if (m_path.empty() || named != m_named || root != m_root) {
      m_path = LogFile();
      m_named = std::move(named);
      m_root = std::move(root);
    }
    return m_path;
  }

 private:
  std::string m_named;
  std::string m_root;
  fs::path m_path;
};

/// Whether there is room for a line of this size. On the disk it is taken already, with some more
/// for the lines of others at this moment: of a line that is written without, a full disk would
/// take the beginning, and so would a limit on the size of files. Where a file system cannot tell,
/// it has room.
bool TakeRoom(const platform::Descriptor& file, std::size_t size) {
  constexpr std::size_t kForOthers = 0x2000;
  const auto room = static_cast<off_t>(size + kForOthers);
  struct stat status = {};
  struct rlimit limit = {};
  if (fstat(file.Get(), &status) != 0 || getrlimit(RLIMIT_FSIZE, &limit) != 0) return true;
  if (static_cast<rlim_t>(status.st_size + room) > limit.rlim_cur) return false;
  return fallocate(file.Get(), FALLOC_FL_KEEP_SIZE, status.st_size, room) == 0 ||
         (errno != ENOSPC && errno != EDQUOT);
}

bool EndsInWholeLine(const platform::Descriptor& file, off_t size) {
  char last = '\n';
  return size == 0 || pread(file.Get(), &last, 1, size - 1) != 1 || last == '\n';
}

/// Where the line begins that has no end yet.
off_t BeginOfLastLine(const platform::Descriptor& file, off_t size) {
  while (!EndsInWholeLine(file, size)) --size;
  return size;
}

/// The system writes page by page, so a process that is killed meanwhile leaves the part of its
/// line that filled a page. Such a part goes. One that is about to get its end, because another
/// process is writing at this moment, stays.
void RemoveCutLine(const platform::Descriptor& file) {
  constexpr std::chrono::milliseconds kPatience(100);
  constexpr std::chrono::milliseconds kLongestWrite(20);
  struct stat seen = {};
  if (fstat(file.Get(), &seen) != 0 || EndsInWholeLine(file, seen.st_size)) return;
  if (!platform::Lock(file, LOCK_EX, kPatience)) return;
  for (struct stat before = {}; before.st_size != seen.st_size;) {
    before = seen;
    std::this_thread::sleep_for(kLongestWrite);
    if (fstat(file.Get(), &seen) != 0 || EndsInWholeLine(file, seen.st_size)) return;
  }
  [[maybe_unused]] const int cut = ftruncate(file.Get(), BeginOfLastLine(file, seen.st_size));
}

/// Each line is one write, which the system puts at the end of the file as it then is.
class AppendSink : public spdlog::sinks::base_sink<std::mutex> {
 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    const platform::Descriptor file = platform::Open(m_path.Get(), O_RDWR | O_APPEND | O_CREAT);
    if (!file) return;
    RemoveCutLine(file);
    if (!TakeRoom(file, line.size())) return;
    [[maybe_unused]] const ssize_t written = write(file.Get(), line.data(), line.size());
  }
  void flush_() override {}

 private:
  LogPath m_path;
};

/// Never destroyed: there may be lines to the very end of the process.
spdlog::logger& Logger() {
  static spdlog::logger* const logger = [] {
    auto made = std::make_unique<spdlog::logger>("SigilSetting", std::make_shared<AppendSink>());
    made->set_pattern("%Y-%m-%d %H:%M:%S.%e %P %v");
    made->set_level(spdlog::level::trace);
    made->set_error_handler([](const std::string&) {});
    return made.release();
  }();
  return *logger;
}

}  // namespace

int LowestLevel() {
  return std::atoi(Variable("SIGIL_LOG_LEVEL").c_str());
}

void Append(std::string_view text) {
  Logger().log(spdlog::level::info, spdlog::string_view_t(text.data(), text.size()));
}

}  // namespace logging
