#include <fcntl.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "peers/logging/log_file.h"
#include "platform/posix/machine/machine.h"
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
      m_path = named.empty() ? platform::HostPath(kLogFile) : fs::path(named);
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

/// Each line is one write, which the system puts at the end of the file as it then is.
class AppendSink : public spdlog::sinks::base_sink<std::mutex> {
 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    const platform::Descriptor file = platform::Open(m_path.Get(), O_WRONLY | O_APPEND | O_CREAT);
    if (!file) return;
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
