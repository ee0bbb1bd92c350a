#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "app/machine/places.h"
#include "app/machine/setting_state.h"
#include "app/machine/settings.h"
#include "peers/settings_component/setting_file.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// What a pass writes to a new machine, with its log, takes less.
constexpr std::uintmax_t kNeeded = 512 * 1024;

fs::path NearestThatExists(fs::path folder) {
  std::error_code error;
  while (!fs::exists(folder, error) && folder.has_relative_path()) folder = folder.parent_path();
  return folder;
}

/// Empty when the component can do with the file that is there.
std::string WhyDamaged(const fs::path& file) {
  if (const std::string refused = WhyRefused(file); !refused.empty())
    return "unreadable: it " + refused;
  try {
    peers::CheckSettingFile(file);
    return "";
  } catch (const std::system_error& error) {
    return "unreadable: " + error.code().message();
  } catch (const std::runtime_error& error) {
    return std::string("damaged: ") + error.what();
  }
}

std::string WhyUnsaved(const fs::path& file) {
  // The component writes these too, where they are there.
  for (const char* ending : {"", ".lock", "-wal", "-shm"}) {
    const fs::path each = fs::path(file) += ending;
    std::error_code error;
    std::string closed = WhyRefused(each);
    if (closed.empty() && fs::exists(each, error)) closed = WhyNotWritten(each);
    if (!closed.empty()) return each.filename().string() + " " + closed;
  }
  return WhyNotMade(file.parent_path());
}

}  // namespace

std::string WhyNotWritten(const fs::path& path) {
  if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0) return "";
  return "cannot be written: " + std::generic_category().message(errno);
}

std::string WhyClosed(const fs::path& folder) {
  const fs::path nearest = NearestThatExists(folder);
  const std::string closed = WhyNotWritten(nearest);
  return closed.empty() ? "" : "the folder " + nearest.string() + " " + closed;
}

std::string WhyFull(const fs::path& folder) {
  struct statvfs disk = {};
  if (statvfs(NearestThatExists(folder).c_str(), &disk) != 0) return "";
  const std::uintmax_t left = std::uintmax_t{disk.f_bavail} * disk.f_frsize;
  if (left < kNeeded) return "the disk is full, " + std::to_string(left) + " bytes are left";
  if (disk.f_files != 0 && disk.f_favail == 0) return "the disk is full, no file more can be made";
  return "";
}

std::string WhyNotMade(const fs::path& folder) {
  const std::string closed = WhyClosed(folder);
  return closed.empty() ? WhyFull(folder) : closed;
}

SettingState ExamineSettingFile() {
  const peers::SettingPlace setting = peers::FindSettingPlace();
  SettingState state;
  state.place = platform::ToUtf8(setting.folder) + "\\" + setting.file.filename().string();
  std::error_code error;
  const bool isThere = fs::exists(fs::symlink_status(setting.file, error));
  const std::string damage = isThere ? WhyDamaged(setting.file) : "";
  state.unsaved = damage.empty() ? WhyUnsaved(setting.file) : "the setting file is " + damage;
  if (!isThere)
    state.state = "not there yet";
  else if (damage.empty())
    state.state = std::to_string(fs::file_size(setting.file, error)) + " bytes";
  else
    state.state = damage + "; the component can neither read nor write it";
  if (damage.empty() && !state.unsaved.empty()) state.state += "; " + state.unsaved;
  return state;
}

std::optional<std::set<std::string>> WatermarkIds() {
  std::set<std::string> ids;
  try {
    for (const auto& entry : peers::ReadSettingFile(peers::FindSettingPlace().file).entries)
      for (const auto& mark : entry.watermarks) ids.insert(mark.id);
  } catch (const std::exception&) {
    ids.clear();
  }
  return ids;
}

std::vector<std::string> WhatIsIdle() {
  try {
    return IdleEntries(ReadSettings().entries);
  } catch (const std::exception&) {
    return {};
  }
}

bool CanSave() {
  return ExamineSettingFile().unsaved.empty();
}

}  // namespace app
