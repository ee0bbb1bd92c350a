#pragma once

#include <string>

namespace app {

struct CheckOptions {
  std::string file;
  int policyId = 1;
  bool isJson = false;
};

/// Tells what a policy becomes on this machine. Returns 0 when nothing is found, 1 with findings.
/// Throws UsageError for a text that the passes refuse, std::runtime_error where they fail over
/// any.
int Check(const CheckOptions& options);

}  // namespace app
