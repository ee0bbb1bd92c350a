#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <iomanip>
#include <iterator>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "app/commands/command_line.h"
#include "app/machine/home.h"
#include "app/text/errors.h"
#include "platform/visible_text.h"

namespace app {
namespace {

constexpr const char* kLevels[] = {"trace", "detail", "progress", "info", "warning", "error"};

/// The number of a line that only tells that a place in the code was reached. The library gives it
/// the level of a warning.
constexpr std::string_view kTraceOfPath = "99999999 ";

constexpr std::size_t kStamp = std::string_view("2025-03-31 09:12:45.678").size();

/// The lines that are left out. With any filter those go too that the library has not written.
struct LogFilter {
  int level = 0;      ///< Lines below it.
  std::string since;  ///< Lines before it: a time as it stands in the log, or empty.
};

bool IsLevel(int number) {
  return number >= 0 && number < std::ssize(kLevels);
}

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

/// Returns whether the line begins with a time stamp.
bool HasStamp(std::string_view text) {
  return text.size() > kStamp && text[4] == '-' && text[10] == ' ' && text[13] == ':' &&
         text[kStamp] == ' ';
}

/// Returns the line as it is shown; an empty text when it is left out.
std::string Shown(std::string_view text, const LogFilter& filter) {
  std::string_view rest = HasStamp(text) ? text.substr(kStamp + 1) : "";
  const std::string_view process = Cut(rest);
  auto level = Number(Cut(rest));
  if (!Number(process) || !level) {
    const bool isAllShown = filter.level <= 0 && filter.since.empty();
    return isAllShown ? platform::Visible(text) + "\n" : "";
  }
  const std::string stamp(text.substr(0, kStamp));
  if (rest.starts_with(kTraceOfPath)) level = 0;
  if (*level < filter.level || stamp < filter.since) return "";
  std::string word = IsLevel(*level) ? kLevels[*level] : std::to_string(*level);
  word.resize(std::max(word.size(), std::string_view("progress").size()), ' ');
  return platform::Visible(stamp + " " + std::string(process) + " " + word + " " +
                           std::string(rest)) +
         "\n";
}

[[noreturn]] void FailToPrint() {
  throw std::system_error(errno, std::generic_category(), "standard output");
}

/// Prints the lines as they are shown. A line that has no end yet is printed at the end of the
/// source, or when it is longer than any that the library writes.
void PrintLines(const LogSource& read, const LogFilter& filter) {
  constexpr std::size_t kLongestLine = 0x100000;
  std::string line;
  const auto put = [&] {
    const std::string shown = Shown(line, filter);
    line.clear();
    if (std::fwrite(shown.data(), 1, shown.size(), stdout) != shown.size()) FailToPrint();
  };
  char block[0x4000];
  while (const std::size_t size = read(block, sizeof block)) {
    std::string_view bytes(block, size);
    for (std::size_t end; (end = bytes.find('\n')) != bytes.npos; bytes.remove_prefix(end + 1)) {
      line += bytes.substr(0, end);
      put();
    }
    line += bytes;
    if (line.size() > kLongestLine) put();
    if (std::fflush(stdout) != 0) FailToPrint();
  }
  if (!line.empty()) put();
  if (std::fflush(stdout) != 0) FailToPrint();
}

int ParseLevel(const std::string& text) {
  const auto word = std::ranges::find(kLevels, text);
  if (word != std::end(kLevels)) return static_cast<int>(word - kLevels);
  const auto number = Number(text);
  if (!number || !IsLevel(*number))
    throw UsageError("--level: 0 to 5 or trace, detail, progress, info, warning, error, not '" +
                     text + "'");
  return *number;
}

std::string Stamp(const std::tm& time) {
  char text[64];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &time)};
}

std::tm Local(std::time_t time) {
  return *std::localtime(&time);
}

/// Seconds of "10m" and the like; nothing for any other text.
std::optional<std::time_t> ParseAgo(const std::string& text) {
  constexpr std::string_view kUnits = "smhd";
  constexpr int kSeconds[] = {1, 60, 3600, 86400};
  const std::size_t unit = text.size() < 2 ? kUnits.npos : kUnits.find(text.back());
  const auto number = Number(std::string_view(text).substr(0, text.size() - 1));
  if (unit == kUnits.npos || !number || *number < 0) return std::nullopt;
  return std::time_t{*number} * kSeconds[unit];
}

std::string ParseSince(const std::string& text) {
  const std::time_t now = std::time(nullptr);
  if (const auto ago = ParseAgo(text)) return Stamp(Local(now - *ago));
  for (const char* form : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M",
                           "%Y-%m-%dT%H:%M", "%Y-%m-%d", "%H:%M:%S", "%H:%M"}) {
    std::tm time = Local(now);  // whose day stands where the text has none
    time.tm_hour = time.tm_min = time.tm_sec = 0;
    std::istringstream stream(text);
    if (stream >> std::get_time(&time, form) && stream.peek() == EOF) return Stamp(time);
  }
  throw UsageError("--since: a time like '2025-03-31 09:12', '09:12' or '10m', not '" + text + "'");
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
  PrintLines(options.follows ? FollowLog() : OpenLog(), filter);
  return 0;
}

}  // namespace

void AddLog(CommandLine& line) {
  auto [command, options] = line.Add("log", "Prints the log file", PrintLog);
  command.add_flag("--follow", options.follows, "And goes on as it grows");
  command
      .add_option("--level", options.level,
                  "Lines of this level and above, 0 to 5 or its word: trace, detail, progress, "
                  "info, warning or error")
      ->type_name("LEVEL");
  command.add_option("--since", options.since, "Lines since: 2025-03-31, '2025-03-31 09:12', 10m")
      ->type_name("TIME");
}

}  // namespace app
