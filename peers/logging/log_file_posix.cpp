#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "peers/logging/log_path_posix.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/size_signal.h"

namespace logging {
namespace {

namespace fs = std::filesystem;

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// Keeps the path of the log file until one of the variables that it depends on changes.
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

/// Returns whether there is room for a line of this size. Reserves the room first, with some more
/// for lines that other processes write at this moment, so that a full disk or the limit on the
/// size of files drops the line instead of cutting it. A file system that cannot reserve has room.
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

/// Returns the bytes behind the last line end; null when they are more than kLongestLine.
std::optional<std::string> LastLine(const platform::Descriptor& file, off_t size) {
  constexpr off_t kLongestLine = 1 << 20;
  const off_t begin = std::max(size - kLongestLine, off_t{0});
  std::string bytes(static_cast<std::size_t>(size - begin), '\0');
  const ssize_t read = pread(file.Get(), bytes.data(), bytes.size(), begin);
  bytes.resize(static_cast<std::size_t>(std::max(read, ssize_t{0})));
  const std::size_t end = bytes.rfind('\n');
  if (end == bytes.npos && begin > 0) return std::nullopt;
  return bytes.substr(end + 1);
}

/// Returns whether a line of the log begins with these bytes, as far as they tell.
bool IsBeginOfLine(std::string_view bytes) {
  constexpr std::string_view kForm = "0000-00-00 00:00:00.000 ";
  return std::ranges::equal(bytes.substr(0, kForm.size()), kForm.substr(0, bytes.size()),
                            [](char found, char form) {
                              return form == '0' ? found >= '0' && found <= '9' : found == form;
                            });
}

/// Removes the begin of a line that a killed process has left: the system writes page by page. One
/// that another process is writing at this moment stays. Returns whether the file, which may be any
/// text that SIGIL_LOG names, ends in a whole line now.
bool RemoveCutLine(const platform::Descriptor& file) {
  constexpr std::chrono::milliseconds kPatience(100);
  constexpr std::chrono::milliseconds kLongestWrite(20);
  struct stat seen = {};
  if (fstat(file.Get(), &seen) != 0 || EndsInWholeLine(file, seen.st_size)) return true;
  if (!platform::Lock(file, LOCK_EX, kPatience)) return false;
  for (struct stat before = {}; before.st_size != seen.st_size;) {
    before = seen;
    std::this_thread::sleep_for(kLongestWrite);
    if (fstat(file.Get(), &seen) != 0 || EndsInWholeLine(file, seen.st_size)) return true;
  }
  const auto cut = LastLine(file, seen.st_size);
  return cut && IsBeginOfLine(*cut) &&
         ftruncate(file.Get(), seen.st_size - static_cast<off_t>(cut->size())) == 0;
}

/// Appends each line in one write, which the system puts at the end of the file as it then is.
class AppendSink : public spdlog::sinks::base_sink<std::mutex> {
 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    const platform::NoSizeSignal guard;
    const platform::Descriptor file = platform::Open(m_path.Get(), O_RDWR | O_APPEND | O_CREAT);
    if (!file) return;
    spdlog::memory_buf_t line;
    if (!RemoveCutLine(file)) line.push_back('\n');
    formatter_->format(message, line);
    if (!TakeRoom(file, line.size())) return;
    [[maybe_unused]] const ssize_t written = write(file.Get(), line.data(), line.size());
  }
  void flush_() override {}

 private:
  LogPath m_path;
};

/// Never destroyed, because lines may be logged until the process ends.
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
