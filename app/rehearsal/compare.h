#pragma once

// The differences between the records of two setting files, and whether the machine's records are
// those that a policy asks for. GUIDs are no difference, because the component makes new ones with
// each update.

#include "app/rehearsal/review.h"
#include "app/text/table.h"

namespace app {

/// One difference, in the entries that have it alike.
struct Difference {
  std::vector<std::string> entries;  ///< By their printers; none for the exclude list.
  std::string subject;               ///< An element's ID, a printer; empty for the whole entry.
  std::string field;                 ///< "opacity", "switch", "order", "exclude list", ...
  std::string left;                  ///< As it is shown to people.
  std::string right;
};

/// Compares the records that two policies leave: all entries and the exclude list.
std::vector<Difference> Compare(const Review& left, const Review& right);

/// Returns the rows of a table, with headings, of which the last two are the names of the sides.
/// The entries are named where a difference is not the same in all of `entries`.
std::vector<Row> RowsOf(const std::vector<Difference>& differences, std::size_t entries,
                        const std::string& left, const std::string& right);

struct Force {
  /// The record's value is the left one, the policy's the right.
  std::vector<Difference> differences = {};
  std::size_t entries = 0;   ///< That the policy asks for.
  std::size_t excluded = 0;  ///< Printers that it asks to be on the exclude list.
  std::string unknown = {};  ///< Why it cannot be told; then there is nothing else.

  bool IsIn() const { return unknown.empty() && differences.empty(); }
};

/// Compares the setting file with the records of the review, mark by mark, on the default entry and
/// every printer of the suite's driver, and the exclude list with the printers of now.
Force ForceOf(const Review& review);

/// Returns the rows of its differences.
std::vector<Row> RowsOf(const Force& force);

/// Returns one sentence: "in force on 3 entries; ...", "not in force: ...", "cannot be told: ...".
std::string Sentence(const Force& force);

}  // namespace app
