#pragma once

// Transcripts: long records, kept as plain text beside the tests. A file has sections,
//
//   == entry not switched on
//   when call 1 of PrinterSettings::Save gives -1: -101
//   Settings::GetPrinterSettings("$1")
//   @saved | $1
//
// where $1, $2, ... stand for values, and `@name | value | ...` for another section, which holds
// no such line itself. A line with `when` is a row: what causes the record (see causes.h), and the
// pass's result. What stands before the first section is a remark.

#include <map>
#include <string>
#include <vector>

namespace tests {

class Transcript {
 public:
  using Values = std::vector<std::string>;
  struct Row {
    std::string section, causes;
    int result;
  };

  /// Joins the sections of `files`, each a path below the folder of the tests, without its `.txt`.
  explicit Transcript(const std::vector<std::string>& files);

  /// A section with its values. What is missing is an exception.
  std::string operator()(const std::string& section, const Values& values = {}) const;

  /// Where the sections stand that were asked for since the last call, for a failure to tell.
  static std::string TakePlaces();

  /// Those of the last file, which is the one about the pass.
  const std::vector<Row>& Rows() const { return m_rows; }

 private:
  struct Section {
    std::string file, text;
  };

  const Section& Find(const std::string& section) const;

  std::map<std::string, Section> m_sections;
  std::vector<Row> m_rows;
};

}  // namespace tests
