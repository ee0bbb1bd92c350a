#pragma once

// Whether the machine's records are those that a policy asks for.

#include <string>
#include <vector>

#include "app/rehearsal/compare.h"
#include "app/rehearsal/review.h"

namespace app {

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

/// Returns one sentence: "in force: ...", "not in force: ...", "cannot be told: ...".
std::string Sentence(const Force& force);

}  // namespace app
