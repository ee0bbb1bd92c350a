#pragma once

// Whether the Settings component can read and write its file here, found out without changing
// anything.

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace app {

struct SettingState {
  std::string state;    ///< For people.
  std::string place;    ///< Where the file is, as a Windows path; empty on Windows.
  std::string unsaved;  ///< Why nothing would be saved; empty when all is well.
};

SettingState ExamineSettingFile();

/// The GUIDs of all watermarks in the setting file, none when it cannot be read. Nothing where the
/// file's form is the component's own.
std::optional<std::set<std::string>> WatermarkIds();

/// The entries that are on without a watermark to print, a line each (show.h); none when the file
/// cannot be read, or where its form is the component's own.
std::vector<std::string> WhatIsIdle();

/// Whether what a pass does would be saved, as far as it can be told beforehand.
bool CanSave();

/// "cannot be written: ...", of a path that is there; empty when this process can write to it.
std::string WhyNotWritten(const std::filesystem::path& path);

/// Why a file could not be made in `folder`, or in the nearest one above it that there is: what
/// keeps this account from it, what is missing on the disk, and the first of both. Empty when
/// nothing does.
std::string WhyClosed(const std::filesystem::path& folder);
std::string WhyFull(const std::filesystem::path& folder);
std::string WhyNotMade(const std::filesystem::path& folder);

}  // namespace app
