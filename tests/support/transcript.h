#pragma once

// Transcripts: long records, kept as plain text beside the tests. A file has sections,
//
//   == entry switched on
//   Settings::GetPrinterSettings("$1")
//   @saved | $1
//
// where $1, $2, ... stand for values, and `@name | value | ...` for another section: with the same
// values when it gives none. What stands before the first section is a remark.

#include <map>
#include <string>
#include <vector>

namespace tests {

class Transcript {
 public:
  using Values = std::vector<std::string>;

  /// Joins the sections of `files`, each a path below the folder of the tests, without its `.txt`.
  explicit Transcript(const std::vector<std::string>& files);

  /// The text of a section with its values. What is missing is an exception.
  std::string operator()(const std::string& section, const Values& values = {}) const;

 private:
  std::map<std::string, std::string> m_sections;
};

}  // namespace tests
