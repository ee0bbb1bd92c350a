#pragma once

#include <string>

namespace app {

struct DiffOptions {
  std::string first;
  std::string second;
  int policyId = 1;
};

/// Tells in what the records differ that two policies leave on this machine. Returns 0 when they
/// are the same, 1 when not. Throws UsageError for a policy that leaves none.
int Diff(const DiffOptions& options);

}  // namespace app
