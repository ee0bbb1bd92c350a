// The files of a machine: the setting file, and those that keep a pass from its work.

#include <fcntl.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <stdexcept>
#include <system_error>

#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "host/shared_names.h"
#include "peers/logging/log_path_posix.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// Returns "is a link" or the like when the entry at `path` is not of this type. Returns an empty
/// text when it is, or when there is no entry.
std::string WhyNot(const fs::path& path, mode_t type) {
  static const std::map<mode_t, std::string> kinds = {{S_IFLNK, "is a link"},
                                                      {S_IFIFO, "is a FIFO"},
                                                      {S_IFDIR, "is a folder"},
                                                      {S_IFSOCK, "is a socket"},
                                                      {S_IFREG, "is a file"}};
  if (platform::Open(path, O_PATH | O_NOFOLLOW, type)) return "";
  const int error = errno;
  struct stat status = {};
  if (error == ENOENT || lstat(path.c_str(), &status) != 0) return "";
  const mode_t kind = status.st_mode & S_IFMT;
  if (kind != type) return kinds.contains(kind) ? kinds.at(kind) : "is a device";
  if (status.st_uid != geteuid()) return "belongs to another account";
  return "cannot be opened: " + std::generic_category().message(error);
}

/// The first on the way from the root to `path` that is refused.
std::optional<RefusedPlace> FindRefused(const fs::path& path, mode_t type) {
  if (!platform::IsInMachine(path)) return std::nullopt;
  if (auto above = FindRefused(path.parent_path(), S_IFDIR)) return above;
  std::string why = WhyNot(path, type);
  return why.empty() ? std::nullopt : std::optional(RefusedPlace{path, std::move(why)});
}

fs::path MutexFolder() {
  return platform::MachineRoot() / "mutex";
}

fs::directory_iterator MutexFiles() {
  std::error_code ignored;
  return fs::directory_iterator(MutexFolder(), ignored);
}

std::vector<fs::path> KnownFiles() {
  std::vector<fs::path> files = {platform::MachineRoot() / "machine.ini"};
  for (const std::wstring& path : ClientFiles()) files.push_back(platform::HostPath(path));
  try {
    const peers::SettingPlace setting = peers::FindSettingPlace();
    files.push_back(platform::HostPath(setting.folder + kUserInformationName));
    files.push_back(setting.file);
    files.push_back(fs::path(setting.file) += ".lock");
  } catch (const std::runtime_error&) {
    // Without machine.ini nobody knows whose setting folder it would be; it is on the list itself.
  }
  files.push_back(logging::LogFile());
  for (const fs::path& file : MutexFiles()) files.push_back(file);
  return files;
}

/// What a pass writes to a new machine, with its log, takes less.
constexpr std::uintmax_t kNeeded = 512 * 1024;

fs::path NearestThatExists(fs::path folder) {
  std::error_code error;
  while (!fs::exists(folder, error) && folder.has_relative_path()) folder = folder.parent_path();
  return folder;
}

/// "cannot be written: ...", of a path that is there; empty when this process can write to it.
std::string WhyNotWritten(const fs::path& path) {
  if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0) return "";
  return "cannot be written: " + std::generic_category().message(errno);
}

/// Returns what the disk lacks for a file; empty when it has room.
std::string WhyFull(const fs::path& folder) {
  struct statvfs disk = {};
  if (statvfs(NearestThatExists(folder).c_str(), &disk) != 0) return "";
  const std::uintmax_t left = std::uintmax_t{disk.f_bavail} * disk.f_frsize;
  if (left < kNeeded) return "the disk is full, " + std::to_string(left) + " bytes are left";
  if (disk.f_files != 0 && disk.f_favail == 0) return "the disk is full, no file more can be made";
  return "";
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

// The next two look at the folder, or at the nearest one above it that exists.

/// Returns why this account cannot make a file there; empty when it can.
std::string WhyClosed(const fs::path& folder) {
  const fs::path nearest = NearestThatExists(folder);
  const std::string closed = WhyNotWritten(nearest);
  return closed.empty() ? "" : "the folder " + nearest.string() + " " + closed;
}

/// Returns the same, or what the disk lacks for a file.
std::string WhyNotMade(const fs::path& folder) {
  const std::string closed = WhyClosed(folder);
  return closed.empty() ? WhyFull(folder) : closed;
}

std::string WhyUnsaved(const fs::path& file) {
  // The component writes these too, where they are there.
  for (const char* ending : {"", ".lock", "-wal", "-shm"}) {
    const fs::path each = fs::path(file) += ending;
    std::error_code error;
    std::string why = WhyRefused(each);
    if (why.empty() && fs::exists(each, error)) why = WhyNotWritten(each);
    if (!why.empty()) return each.filename().string() + " " + why;
  }
  return WhyNotMade(file.parent_path());
}

}  // namespace

std::string WhyRefused(const fs::path& file) {
  const auto refused = FindRefused(file, S_IFREG);
  if (!refused) return "";
  if (refused->path == file) return refused->why;
  return "lies in " + refused->path.filename().string() + ", which " + refused->why;
}

std::string WhyNoMutex() {
  if (const auto folder = FindRefused(MutexFolder(), S_IFDIR)) return "its folder " + folder->why;
  for (const fs::path& file : MutexFiles())
    if (const auto refused = FindRefused(file, S_IFREG)) return "its file " + refused->why;
  return WhyClosed(MutexFolder());
}

std::vector<RefusedPlace> RefusedPlaces() {
  std::vector<RefusedPlace> places;
  const auto add = [&](const std::optional<RefusedPlace>& place) {
    if (place && std::ranges::find(places, place->path, &RefusedPlace::path) == places.end())
      places.push_back(*place);
  };
  for (const fs::path& file : KnownFiles()) add(FindRefused(file, S_IFREG));
  add(FindRefused(MutexFolder(), S_IFDIR));
  return places;
}

std::string WhyUnstored(const fs::path& userFile) {
  const std::string refused = WhyRefused(userFile);
  return refused.empty() ? WhyNotMade(userFile.parent_path())
                         : userFile.filename().string() + " " + refused;
}

std::string WhyLogLost() {
  const fs::path file = fs::absolute(logging::LogFile());
  std::error_code error;
  std::string why = WhyRefused(file);
  const bool isThere = fs::exists(fs::symlink_status(file, error));
  if (why.empty() && isThere && !platform::Open(file, O_WRONLY | O_APPEND))
    why = "cannot be written: " + std::generic_category().message(errno);
  return why.empty() ? WhyNotMade(file.parent_path()) : "it " + why;
}

SettingState ExamineSettingFile() {
  const peers::SettingPlace setting = peers::FindSettingPlace();
  SettingState state;
  state.place = setting.file.string();
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

peers::SettingFileContent ReadSettings() {
  const auto file = peers::FindSettingPlace().file;
  try {
    return peers::ReadSettingFile(file);
  } catch (const std::system_error&) {
    throw;  // It names the file.
  } catch (const std::exception& error) {
    throw std::runtime_error(file.string() + ": " + error.what());
  }
}

const bool kReadsValues = true;

std::optional<std::wstring> SettingFolder() {
  return peers::FindSettingPlace().folder;
}

}  // namespace app
