#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <optional>
#include <string_view>
#include <thread>

#include "app/commands/log_view.h"
#include "app/text/usage_error.h"
#include "peers/descriptor.h"
#include "platform/visible_text.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLevels[] = {"trace", "detail", "progress", "info", "warning", "error"};

/// The number of a line that only tells that a place in the code was reached. The library gives it
/// the level of a warning.
constexpr std::string_view kTraceOfPath = "99999999 ";

/// The parts of a line that are looked at.
struct Line {
  std::string_view stamp;  ///< Date and time.
  std::string_view process;
  int level;
  std::string_view rest;
};

/// What stands before the next blank, which goes with it.
std::string_view Cut(std::string_view& text) {
  const std::size_t end = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

std::optional<int> Number(std::string_view text) {
  int number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<Line> Parse(std::string_view text) {
  constexpr std::size_t kStamp = std::string_view("2025-03-31 09:12:45.678").size();
  if (text.size() <= kStamp || text[4] != '-' || text[10] != ' ' || text[13] != ':' ||
      text[kStamp] != ' ')
    return std::nullopt;
  const std::string_view stamp = text.substr(0, kStamp);
  text.remove_prefix(kStamp + 1);
  const std::string_view process = Cut(text);
  const auto level = Number(Cut(text));
  if (!Number(process) || !level) return std::nullopt;
  return Line{stamp, process, text.starts_with(kTraceOfPath) ? 0 : *level, text};
}

std::string Word(int level) {
  const bool isKnown = level >= 0 && static_cast<std::size_t>(level) < std::size(kLevels);
  return isKnown ? kLevels[level] : std::to_string(level);
}

/// The line as it is shown; empty when it is left out.
std::string Shown(std::string_view text, const LogFilter& filter) {
  const auto line = Parse(text);
  if (!line) {
    const bool isAllShown = filter.level <= 0 && filter.since.empty();
    return isAllShown ? platform::Visible(text) + "\n" : "";
  }
  if (line->level < filter.level || line->stamp < filter.since) return "";
  std::string level = Word(line->level);
  level.resize(std::max(level.size(), std::string_view("progress").size()), ' ');
  return platform::Visible(std::string(line->stamp) + " " + std::string(line->process) + " " +
                           level + " " + std::string(line->rest)) +
         "\n";
}

/// A file that is printed up to its end, again and again.
class Tail {
 public:
  Tail(fs::path file, LogFilter filter) : m_path(std::move(file)), m_filter(std::move(filter)) {}

  /// False when there is no file.
  bool Print() {
    if (m_file) PrintRest();  // also of a file that has been put aside since
    struct stat now = {};
    if (stat(m_path.c_str(), &now) != 0) return false;
    if (!m_file || !IsStill(now)) {
      PrintUnended();
      m_file = Open();
      PrintRest();
    }
    if (std::fflush(stdout) != 0) FailToWrite();
    return true;
  }

  /// Also a last line that has no end.
  void PrintUnended() {
    if (!m_unended.empty()) Put(std::exchange(m_unended, {}));
    if (std::fflush(stdout) != 0) FailToWrite();
  }

 private:
  [[noreturn]] static void FailToWrite() { peers::ThrowSystemError("standard output"); }

  peers::Descriptor Open() const {
    peers::Descriptor file = platform::Open(m_path, O_RDONLY, 0);  // of any kind, told below
    if (!file) peers::ThrowSystemError(m_path.string());
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode))
      throw UsageError(m_path.string() + ": not a regular file");
    return file;
  }

  bool IsStill(const struct stat& now) const {
    struct stat own = {};
    return fstat(m_file.Get(), &own) == 0 && own.st_ino == now.st_ino && own.st_dev == now.st_dev &&
           own.st_size >= lseek(m_file.Get(), 0, SEEK_CUR);
  }

  void PrintRest() {
    // A line without end is read once more: that of a process that was killed is taken back.
    lseek(m_file.Get(), -static_cast<off_t>(m_unended.size()), SEEK_CUR);
    m_unended.clear();
    char block[0x4000];
    for (ssize_t size; (size = read(m_file.Get(), block, sizeof block)) != 0;) {
      if (size < 0 && errno != EINTR) peers::ThrowSystemError(m_path.string());
      if (size > 0) Take({block, static_cast<std::size_t>(size)});
    }
  }

  void Take(std::string_view bytes) {
    constexpr std::size_t kLongestLine = 0x100000;
    for (std::size_t end; (end = bytes.find('\n')) != bytes.npos; bytes.remove_prefix(end + 1)) {
      m_unended += bytes.substr(0, end);
      Put(std::exchange(m_unended, {}));
    }
    m_unended += bytes;
    if (m_unended.size() > kLongestLine) Put(std::exchange(m_unended, {}));
  }

  void Put(const std::string& line) const {
    const std::string shown = Shown(line, m_filter);
    if (std::fwrite(shown.data(), 1, shown.size(), stdout) != shown.size()) FailToWrite();
  }

  fs::path m_path;
  LogFilter m_filter;
  peers::Descriptor m_file;
  std::string m_unended;
};

int ParseLevel(const std::string& text) {
  const auto word = std::find(std::begin(kLevels), std::end(kLevels), text);
  if (word != std::end(kLevels)) return static_cast<int>(word - std::begin(kLevels));
  const auto number = Number(text);
  if (!number || *number < 0 || *number > 5)
    throw UsageError("--level: 0 to 5 or trace, detail, progress, info, warning, error, not '" +
                     text + "'");
  return *number;
}

std::string Stamp(const tm& time) {
  char text[64];
  return {text, strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &time)};
}

tm Local(time_t time) {
  tm local = {};
  localtime_r(&time, &local);
  return local;
}

/// Seconds of "10m" and the like; nothing for any other text.
std::optional<time_t> ParseAgo(const std::string& text) {
  constexpr std::string_view kUnits = "smhd";
  constexpr int kSeconds[] = {1, 60, 3600, 86400};
  const std::size_t unit = text.size() < 2 ? kUnits.npos : kUnits.find(text.back());
  const auto number = Number(std::string_view(text).substr(0, text.size() - 1));
  if (unit == kUnits.npos || !number || *number < 0) return std::nullopt;
  return time_t{*number} * kSeconds[unit];
}

std::string ParseSince(const std::string& text) {
  const time_t now = time(nullptr);
  if (const auto ago = ParseAgo(text)) return Stamp(Local(now - *ago));
  for (const char* form : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M",
                           "%Y-%m-%dT%H:%M", "%Y-%m-%d", "%H:%M:%S", "%H:%M"}) {
    tm time = Local(now);  // whose day stands where the text has none
    time.tm_hour = time.tm_min = time.tm_sec = 0;
    const char* const end = strptime(text.c_str(), form, &time);
    if (end != nullptr && *end == '\0') return Stamp(time);
  }
  throw UsageError("--since: a time like '2025-03-31 09:12', '09:12' or '10m', not '" + text + "'");
}

}  // namespace

LogFilter ParseLogFilter(const std::string& level, const std::string& since) {
  return {level.empty() ? 0 : ParseLevel(level), since.empty() ? "" : ParseSince(since)};
}

void PrintLog(const fs::path& file, const LogFilter& filter) {
  Tail tail(file, filter);
  if (!tail.Print()) throw UsageError(file.string() + ": there is no log yet");
  tail.PrintUnended();
}

void FollowLog(const fs::path& file, const LogFilter& filter) {
  constexpr std::chrono::milliseconds kPause(100);
  for (Tail tail(file, filter);; std::this_thread::sleep_for(kPause)) tail.Print();
}

}  // namespace app
