#pragma once

// Comparing what a pass did: component calls, log lines and operations of the machine, in one
// sequence. A record is a text with one line for each:
//
//   4 153400030 OperationSigilSettings::SaveCfg "設定ファイルの保存に失敗しました。"
//   Settings::Save(0)
//   ReleaseMutex
//   component unloaded
//
// A log line has level, number, function, then its texts in quotes (`code N` before them in the
// form with a code). Operations of the machine show only where faults exist, and expected ones are
// passed over elsewhere.

#include <initializer_list>
#include <source_location>
#include <string>
#include <string_view>

namespace tests {

/// What ExpectRecord leaves out.
enum class Hide {
  kDetails,  ///< String objects, whose copies are nobody's business, and the traces of level 0
  kNothing,
};

/// The record since the last reset must equal `expected`, line by line; blank lines don't count. An
/// expected line that ends in `*` fits every line that begins like it.
void ExpectRecord(const std::string& expected, Hide hide = Hide::kDetails,
                  std::source_location where = std::source_location::current());

/// The same for those lines alone that hold one of `parts`, whatever else was done.
void ExpectLinesWith(std::initializer_list<std::string_view> parts, const std::string& expected,
                     std::source_location where = std::source_location::current());

/// Has the operations of the machine that matter recorded.
void WatchMachine();

}  // namespace tests
