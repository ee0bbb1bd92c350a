#pragma once

#include <filesystem>

namespace app {

/// Lays out a sample machine and its client in `root`, and a sample policy `policy.xml` beside
/// them. UsageError when `root` is there and no empty folder.
void LayOutMachine(const std::filesystem::path& root);

}  // namespace app
