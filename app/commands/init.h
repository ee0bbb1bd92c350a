#pragma once

#include <filesystem>

namespace app {

/// Lays out a sample machine and its client in `folder`, and a sample policy `policy.xml` beside
/// them; it is the machine of this process then. UsageError when `folder` is there, unless it is
/// empty and the caller's own.
void LayOutMachine(const std::filesystem::path& folder);

}  // namespace app
