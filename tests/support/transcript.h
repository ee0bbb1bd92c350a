#pragma once

// Transcripts: long records, kept as plain text beside the tests. A file has sections,
//
//   == entry switched on
//   Settings::GetPrinterSettings("$1")
//   @saved | $1
//
// where $1, $2, ... stand for values, and `@name | value | ...` for another section, which holds
// no such line itself. What stands before the first section is a remark.

#include <map>
#include <string>
#include <vector>

#include "tests/support/record.h"

namespace tests {

class Transcript {
 public:
  using Values = std::vector<std::string>;

  /// Joins the sections of `files`, each a path below the folder of the tests, without its `.txt`.
  explicit Transcript(const std::vector<std::string>& files);

  /// A section with its values. What is missing is an exception.
  Told operator()(const std::string& section, const Values& values = {}) const;

 private:
  const Told& Find(const std::string& section) const;

  std::map<std::string, Told> m_sections;
};

}  // namespace tests
