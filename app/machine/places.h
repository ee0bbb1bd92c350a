#pragma once

// What lies in the place of one of the machine's files and is none: a link, a FIFO, a folder, a
// file of another account. The machine refuses to open it, so the library reads such a file as
// missing and cannot write it.

#include <filesystem>
#include <string>
#include <vector>

namespace app {

struct RefusedPlace {
  std::filesystem::path path;
  std::string why;  ///< "is a link", "belongs to another account", ...
};

/// Of all files that the library, its component and its log open, and the folders on the way.
std::vector<RefusedPlace> RefusedPlaces();

/// "is a link", "lies in EMS, which is a link", ...; empty when the machine opens the file, or
/// would make it.
std::string WhyRefused(const std::filesystem::path& file);

/// The same for the passes' mutex: "its file is a link", "its folder is a link", ...
std::string WhyMutexRefused();

}  // namespace app
