#pragma once

// Transcripts: long records, kept as plain text beside the tests. A file has sections,
//
//   == entry not switched on
//   when call 1 of PrinterSettings::Save gives -1: -101
//   Settings::GetPrinterSettings("$1")
//   @saved | $1
//
// where $1, $2, ... stand for values, and `@name | value | ...` for the lines of another section. A
// line with `when` is a row: the cause of the record (see causes.h), and the pass's result. The
// text before the first section is a remark.
//
// A section can be the difference from another one:
//
//   == printer not saved
//   = pass | 0
//   ...
//   Settings::Save(0)
//   4 "The file was not saved."
//   Settings::UnLock()
//   ...
//
// `...` stands for the other section's lines up to the line that follows here, or for all its rest.
// Each line that is in the other section too, after the last such line, takes the place there. So
// the lines between two of them are replaced, here those between Save and UnLock.

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
  Values Lines(const std::string& section, const Values& values) const;

  std::map<std::string, Section> m_sections;
  std::vector<Row> m_rows;
};

}  // namespace tests
