#include "tests/support/record.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <vector>

#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/recorder/recorder.h"
#include "tests/support/transcript.h"

namespace tests {

namespace {

bool IsWatched(std::string_view line) {
  static constexpr std::string_view kWatched[] = {"ReleaseMutex", "CloseHandle",    "LocalFree",
                                                  "CoInitialize", "CoUninitialize", "CreateFileW",
                                                  "WriteFile",    "EnumPrintersW"};
  return std::ranges::count(kWatched, line) > 0;
}

/// The record's lines that pass `isShown` are those of `expected`.
void Compare(const std::string& expected, const std::function<bool(std::string_view)>& isShown,
             std::source_location where) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < RecorderCount(); ++i) {
    const std::string line = platform::ToUtf8(RecorderLine(i));
    if (isShown(line)) lines.push_back(line);
  }
  std::string wanted, got;
  std::istringstream patterns(expected);
  for (std::string pattern; std::getline(patterns, pattern);) {
    if (pattern.empty() || (!platform::kHasFaults && IsWatched(pattern))) continue;
    wanted += pattern + "\n";
    if (!pattern.ends_with('*')) continue;
    const std::string start = pattern.substr(0, pattern.size() - 1);
    const auto fits = [&](const std::string& line) { return line.starts_with(start); };
    std::ranges::replace_if(lines, fits, pattern);
  }
  for (const std::string& line : lines) got += line + "\n";
  const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "record");
  EXPECT_EQ(wanted, got) << "What is wanted stands in" << Transcript::TakePlaces();
  Transcript::TakePlaces();
}

}  // namespace

void ExpectRecord(const std::string& expected, Hide hide, std::source_location where) {
  const auto isShown = [&](std::string_view line) {
    return hide == Hide::kNothing || !(line.starts_with("String[") || line.starts_with("0 0 ") ||
                                       line == "SigilCreateInstance(String)");
  };
  Compare(expected, isShown, where);
}

void ExpectLinesWith(std::initializer_list<std::string_view> parts, const std::string& expected,
                     std::source_location where) {
  const auto isShown = [&](std::string_view line) {
    const auto isIn = [&](std::string_view part) { return line.find(part) != line.npos; };
    return std::ranges::any_of(parts, isIn);
  };
  Compare(expected, isShown, where);
}

void WatchMachine() {
  platform::SetObserver([](const char* operation) {
    if (IsWatched(operation)) RecorderAdd(platform::FromUtf8(operation).c_str());
  });
}

}  // namespace tests
