#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "app/machine/client.h"
#include "app/machine/places.h"
#include "host/shared_names.h"
#include "peers/logging/log_path_posix.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

std::string KindOf(const struct stat& status) {
  switch (status.st_mode & S_IFMT) {
    case S_IFLNK:
      return "a link";
    case S_IFIFO:
      return "a FIFO";
    case S_IFDIR:
      return "a folder";
    case S_IFSOCK:
      return "a socket";
    case S_IFREG:
      return "a file";
    default:
      return "a device";
  }
}

/// "is a link", where `type` is what the machine wants there; empty when it is that or missing.
std::string WhyNot(const fs::path& path, mode_t type) {
  if (platform::Open(path, O_PATH | O_NOFOLLOW, type)) return "";
  const int error = errno;
  struct stat status = {};
  if (error == ENOENT || lstat(path.c_str(), &status) != 0) return "";
  if ((status.st_mode & S_IFMT) != type) return "is " + KindOf(status);
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

std::vector<fs::path> MutexFiles() {
  std::error_code error;
  std::vector<fs::path> files;
  for (const auto& each : fs::directory_iterator(MutexFolder(), error)) files.push_back(each);
  return files;
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
  std::ranges::copy(MutexFiles(), std::back_inserter(files));
  return files;
}

}  // namespace

std::string WhyRefused(const fs::path& file) {
  const auto refused = FindRefused(file, S_IFREG);
  if (!refused) return "";
  if (refused->path == file) return refused->why;
  return "lies in " + refused->path.filename().string() + ", which " + refused->why;
}

std::string WhyMutexRefused() {
  if (const auto folder = FindRefused(MutexFolder(), S_IFDIR)) return "its folder " + folder->why;
  for (const fs::path& file : MutexFiles())
    if (const auto refused = FindRefused(file, S_IFREG)) return "its file " + refused->why;
  return "";
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

}  // namespace app
