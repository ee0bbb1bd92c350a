#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>

#include "app/commands/commands.h"
#include "app/text/errors.h"
#include "peers/descriptor.h"
#include "peers/logging/log_path_posix.h"
#include "platform/visible_text.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLevels[] = {"trace", "detail", "progress", "info", "warning", "error"};

/// The number of a line that only tells that a place in the code was reached. The library gives it
/// the level of a warning.
constexpr std::string_view kTraceOfPath = "99999999 ";

/// What is left out. A line of another form than the library's is left out as soon as anything is.
struct LogFilter {
  int level = 0;      ///< Lines below it.
  std::string since;  ///< Lines before it: a time as it stands in the log, or empty.
};

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

/// Prints the lines as they are shown. A line that has no end yet is printed at the end of the
/// stream, or when it is longer than any that the library writes.
void PrintLines(int descriptor, const LogFilter& filter) {
  constexpr std::size_t kLongestLine = 0x100000;
  std::string line;
  const auto put = [&] {
    const std::string shown = Shown(line, filter);
    line.clear();
    if (std::fwrite(shown.data(), 1, shown.size(), stdout) != shown.size())
      peers::ThrowSystemError("standard output");
  };
  char block[0x4000];
  for (ssize_t size; (size = read(descriptor, block, sizeof block)) != 0;) {
    if (size < 0 && errno != EINTR) peers::ThrowSystemError("the log");
    std::string_view bytes(block, size < 0 ? 0 : static_cast<std::size_t>(size));
    for (std::size_t end; (end = bytes.find('\n')) != bytes.npos; bytes.remove_prefix(end + 1)) {
      line += bytes.substr(0, end);
      put();
    }
    line += bytes;
    if (line.size() > kLongestLine) put();
    if (std::fflush(stdout) != 0) peers::ThrowSystemError("standard output");
  }
  if (!line.empty()) put();
  if (std::fflush(stdout) != 0) peers::ThrowSystemError("standard output");
}

/// Becomes `tail -F`, which follows the file also when another takes its place. A child prints the
/// lines, and ends with the process that was asked to follow.
[[noreturn]] void Follow(const fs::path& file, const LogFilter& filter) {
  int ends[2];
  if (pipe(ends) != 0) peers::ThrowSystemError("pipe");
  const pid_t printer = fork();
  if (printer < 0) peers::ThrowSystemError("fork");
  if (printer == 0) {
    close(ends[1]);
    PrintLines(ends[0], filter);
    _exit(0);
  }
  dup2(ends[1], STDOUT_FILENO);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nowhere, STDERR_FILENO);  // because it names the file each time another takes its place
  execlp("tail", "tail", "-n", "+1", "-s", "0.1", "-F", "--", file.c_str(), nullptr);
  peers::ThrowSystemError("tail");
}

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

peers::Descriptor Open(const fs::path& file) {
  peers::Descriptor opened = platform::Open(file, O_RDONLY, 0);  // of any kind, told below
  if (!opened && errno == ENOENT) throw UsageError(file.string() + ": there is no log yet");
  if (!opened) peers::ThrowSystemError(file.string());
  struct stat status = {};
  if (fstat(opened.Get(), &status) != 0 || !S_ISREG(status.st_mode))
    throw UsageError(file.string() + ": not a regular file");
  return opened;
}

struct Options {
  bool follows = false;
  std::string level;
  std::string since;
};

/// Prints the log file, the level of a line as a word and controls made visible.
int PrintLog(const Options& options) {
  const LogFilter filter = {options.level.empty() ? 0 : ParseLevel(options.level),
                            options.since.empty() ? "" : ParseSince(options.since)};
  const fs::path file = logging::LogFile();
  if (options.follows) Follow(file, filter);
  PrintLines(Open(file).Get(), filter);
  return 0;
}

}  // namespace

void AddLog(CommandLine& line) {
  const auto options = std::make_shared<Options>();
  CLI::App& command =
      line.Add("log", "Prints the log file", [options] { return PrintLog(*options); });
  command.add_flag("--follow", options->follows, "And goes on as it grows");
  command
      .add_option("--level", options->level,
                  "Lines of this level and above, 0 to 5 or its word: trace, detail, progress, "
                  "info, warning or error")
      ->type_name("LEVEL");
  command.add_option("--since", options->since, "Lines since: 2025-03-31, '2025-03-31 09:12', 10m")
      ->type_name("TIME");
}

}  // namespace app
