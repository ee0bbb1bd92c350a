#include "tests/support/record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"

namespace tests {

namespace {

constexpr std::array<std::string_view, 8> kWatched = {
    "ReleaseMutex",   "CloseHandle", "LocalFree", "CoInitialize",
    "CoUninitialize", "CreateFileW", "WriteFile", "EnumPrintersW"};

bool IsWatched(std::string_view line) {
  return std::find(kWatched.begin(), kWatched.end(), line) != kWatched.end();
}

void RecordOperation(const char* operation) {
  if (!IsWatched(operation)) return;
  RecorderAdd(platform::FromUtf8(operation).c_str());
}

bool IsHidden(std::string_view line, Hide hide) {
  return hide == Hide::kDetails && (line.starts_with("String[") || line.starts_with("0 0 ") ||
                                    line == "SigilCreateInstance(String)");
}

std::vector<std::string> RecordLines(Hide hide) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < RecorderCount(); ++i) {
    std::string line = platform::ToUtf8(RecorderLine(i));
    if (!IsHidden(line, hide)) lines.push_back(std::move(line));
  }
  return lines;
}

std::vector<std::string> ExpectedLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!line.empty() && (platform::kHasFaults || !IsWatched(line))) lines.emplace_back(line);
  }
  return lines;
}

using Lines = std::span<const std::string>;

/// How the records differ, line by line: `-` is missing, `+` is too much.
std::string Difference(Lines wanted, Lines got) {
  // common[i][j]: the most lines, in order, that the rests from i and j have in common.
  std::vector common(wanted.size() + 1, std::vector<std::size_t>(got.size() + 1));
  for (std::size_t i = wanted.size(); i-- > 0;)
    for (std::size_t j = got.size(); j-- > 0;)
      common[i][j] = wanted[i] == got[j] ? common[i + 1][j + 1] + 1
                                         : std::max(common[i + 1][j], common[i][j + 1]);
  std::string text, before;
  std::size_t i = 0, j = 0;
  while (i < wanted.size() || j < got.size()) {
    if (i < wanted.size() && j < got.size() && wanted[i] == got[j]) {
      before = "  " + wanted[i++] + "\n";
      ++j;
      continue;
    }
    const bool missing =
        j == got.size() || (i < wanted.size() && common[i + 1][j] >= common[i][j + 1]);
    text += std::exchange(before, "") + (missing ? "- " + wanted[i++] : "+ " + got[j++]) + "\n";
  }
  return text;
}

void Compare(std::string_view expected, std::vector<std::string> got, std::source_location where) {
  const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "record");
  const std::vector<std::string> wanted = ExpectedLines(expected);
  for (const std::string& pattern : wanted) {
    if (!pattern.ends_with('*')) continue;
    const std::string_view start(pattern.data(), pattern.size() - 1);
    std::replace_if(
        got.begin(), got.end(), [&](const std::string& line) { return line.starts_with(start); },
        pattern);
  }
  if (wanted != got) ADD_FAILURE() << "another record:\n" << Difference(wanted, got);
}

}  // namespace

void ExpectRecord(std::string_view expected, Hide hide, std::source_location where) {
  Compare(expected, RecordLines(hide), where);
}

void ExpectLinesWith(std::initializer_list<std::string_view> parts, std::string_view expected,
                     std::source_location where) {
  std::vector<std::string> lines = RecordLines(Hide::kNothing);
  std::erase_if(lines, [&](const std::string& line) {
    return std::none_of(parts.begin(), parts.end(), [&](std::string_view part) {
      return line.find(part) != std::string::npos;
    });
  });
  Compare(expected, lines, where);
}

std::string Fill(std::string_view text, std::initializer_list<std::string_view> arguments) {
  std::string filled(text);
  for (std::size_t i = arguments.size(); i > 0; --i) {
    const std::string mark = "$" + std::to_string(i);
    const std::string_view value = arguments.begin()[i - 1];
    for (std::size_t at = 0; (at = filled.find(mark, at)) != std::string::npos; at += value.size())
      filled.replace(at, mark.size(), value);
  }
  return filled;
}

void WatchMachine() {
  platform::SetObserver(RecordOperation);
}

}  // namespace tests
