#pragma once

#include <filesystem>

namespace app {

/// Makes WmPolicy.dat in the machine's delivery folder of the policy text in `file`, under the key
/// of the machine's key source; an old one is replaced as a whole. UsageError for a file that is no
/// text and for a machine without a key source that will do.
void SealPolicy(const std::filesystem::path& file);

}  // namespace app
