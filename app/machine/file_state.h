#pragma once

// Files of the machine that keep a pass from its work: those that the machine refuses to open, as a
// link, a FIFO, a folder or a file of another account, which the library reads as missing; and
// those that cannot be written. Nothing is changed to find out.

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace app {

struct SettingState {
  std::string state;    ///< For people.
  std::string place;    ///< Where the file is; empty on Windows.
  std::string unsaved;  ///< Why nothing would be saved; empty when all is well.
};

SettingState ExamineSettingFile();

/// The GUIDs of all watermarks in the setting file, none when it cannot be read. Nothing where the
/// file's form is the component's own.
std::optional<std::set<std::string>> WatermarkIds();

/// Returns a line for each entry that is on without a watermark to print; none when the file cannot
/// be read, or where its form is the component's own.
std::vector<std::string> WhatIsIdle();

/// "cannot be written: ...", of a path that is there; empty when this process can write to it.
std::string WhyNotWritten(const std::filesystem::path& path);

// The next three ask the folder, or the nearest one above it that exists.

/// Returns why this account cannot make a file there; empty when it can.
std::string WhyClosed(const std::filesystem::path& folder);
/// Returns what the disk lacks for a file; empty when it has room.
std::string WhyFull(const std::filesystem::path& folder);
/// Returns the first of both reasons.
std::string WhyNotMade(const std::filesystem::path& folder);

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
