#pragma once

#include <string>

namespace app {

/// Gives the policy text of a sealed file back, under the machine's key: `file`, and where that is
/// empty the delivered one; to the file `output`, and where that is empty to standard output. At a
/// terminal its controls are made visible. UsageError when no text comes of it.
void UnsealPolicy(const std::string& file, const std::string& output);

}  // namespace app
