#include "app/rehearsal/scratch_machine_posix.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <stdexcept>
#include <system_error>

#include "app/machine/client.h"
#include "app/machine/settings.h"
#include "host/shared_names.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr char kPrefix[] = "sigilctl-rehearsal-";

/// Throws std::runtime_error for a folder in which another account could put a folder of its own in
/// the place of the scratch's: in the folder itself or in one above it.
void RequireClosed(fs::path folder) {
  for (;; folder = folder.parent_path()) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) peers::ThrowSystemError(folder.string());
    const bool isOthers = status.st_uid != 0 && status.st_uid != geteuid();
    const bool isOpen = (status.st_mode & 022) != 0 && (status.st_mode & S_ISVTX) == 0;
    if (isOthers || isOpen)
      throw std::runtime_error("TMPDIR is not safe: other accounts can replace what lies in " +
                               folder.string());
    if (folder == folder.root_path()) return;
  }
}

/// In memory where that can be had, because a rehearsal need not wait for a disk.
fs::path ScratchPlace() {
  const char* const named = getenv("TMPDIR");
  if (named != nullptr && *named != '\0') {
    fs::path place = fs::canonical(named);
    RequireClosed(place);
    return place;
  }
  const fs::path memory = "/dev/shm";
  return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::path("/tmp");
}

/// A descriptor that keeps the folder's lock, when the folder is this account's and nobody has its
/// lock.
peers::Descriptor LockFolder(const fs::path& path) {
  peers::Descriptor folder(
      open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
  struct stat own = {};
  struct stat named = {};
  const bool isOwn = folder && fstat(folder.Get(), &own) == 0 && own.st_uid == geteuid() &&
                     flock(folder.Get(), LOCK_EX | LOCK_NB) == 0;
  // Between the two another process may have removed it, as a left-over.
  const bool isThere = isOwn && lstat(path.c_str(), &named) == 0 && named.st_ino == own.st_ino;
  return isThere ? std::move(folder) : peers::Descriptor();
}

void RemoveLeftOvers(const fs::path& place) {
  std::error_code ignored;
  for (const fs::directory_entry& each : fs::directory_iterator(place, ignored))
    if (each.path().filename().string().starts_with(kPrefix))
      if (const peers::Descriptor lock = LockFolder(each.path()))
        fs::remove_all(each.path(), ignored);
}

fs::path MakeFolder(peers::Descriptor& lock) {
  const fs::path place = ScratchPlace();
  RemoveLeftOvers(place);
  constexpr int kTries = 8;
  for (int i = 0; i < kTries; ++i) {
    std::string name = (place / kPrefix).string() + "XXXXXX";
    if (mkdtemp(name.data()) == nullptr) peers::ThrowSystemError(name);
    lock = LockFolder(name);
    if (lock) return name;
    rmdir(name.c_str());
  }
  throw std::runtime_error(place.string() + ": no folder there can be locked");
}

void Write(const fs::path& file, const std::string& bytes) {
  fs::create_directories(file.parent_path());
  platform::ReplaceWholeFile(file, bytes);
}

/// A root, which must be closed to others whatever the umask is.
fs::path MakeRoot(const fs::path& path) {
  if (mkdir(path.c_str(), 0700) != 0 || chmod(path.c_str(), 0700) != 0)
    peers::ThrowSystemError(path.string());
  return path;
}

/// The place in `root` of a file of the desk's machine; nothing for one that lies outside of the
/// machine, where the rehearsal finds it too.
std::optional<fs::path> PlaceIn(const fs::path& root, const fs::path& file) {
  const fs::path place = file.lexically_relative(platform::MachineRoot());
  if (place.empty() || *place.begin() == "..") return std::nullopt;
  return root / place;
}

void CopyFile(const fs::path& file, const fs::path& root) {
  const auto place = PlaceIn(root, file);
  if (!place) return;
  if (const auto bytes = platform::ReadWholeFile(file)) Write(*place, *bytes);
}

void CopyIfReadable(const fs::path& file, const fs::path& root) {
  try {
    CopyFile(file, root);
  } catch (const std::system_error&) {
    // The library goes on without it too.
  }
}

/// Copies the file and its log byte by byte, because opening the machine's own would leave traces
/// beside it. Leaves out a file that cannot be read, and a copy that is no setting file, because
/// the file is damaged or changed at that moment.
void CopySettings(const fs::path& file, const fs::path& root) {
  const fs::path log = file.string() + "-wal";
  try {
    CopyFile(file, root);
    CopyFile(log, root);
    if (const auto place = PlaceIn(root, file)) peers::ReadSettingFile(*place);
  } catch (const std::exception&) {
    for (const fs::path& each : {file, log})
      if (const auto place = PlaceIn(root, each)) fs::remove(*place);
  }
}

}  // namespace

HeldSignals::HeldSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    struct sigaction now = {};
    const bool isIgnored = sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
    if (!isIgnored) sigaddset(&held, signal);
  }
  pthread_sigmask(SIG_BLOCK, &held, &m_before);
  m_file = peers::Descriptor(signalfd(-1, &held, SFD_CLOEXEC));
}

HeldSignals::~HeldSignals() {
  Release();
}

void HeldSignals::Release() const {
  pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

ScratchMachine::ScratchMachine()
    : m_hold(std::make_unique<Hold>()), m_folder(MakeFolder(m_hold->lock)) {}

ScratchMachine::~ScratchMachine() {
  Remove();
}

void ScratchMachine::Remove() const {
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

fs::path ScratchMachine::CopyMachine() const {
  fs::path root = MakeRoot(m_folder / "machine");
  CopyFile(platform::MachineRoot() / "machine.ini", root);
  for (const std::wstring& file : ClientFiles()) CopyIfReadable(platform::HostPath(file), root);
  const peers::SettingPlace setting = peers::FindSettingPlace();
  const fs::path userFile = platform::HostPath(setting.folder + kUserInformationName);
  CopyIfReadable(userFile, root);
  // As update lays it.
  const auto place = PlaceIn(root, userFile);
  std::error_code error;
  if (place && !fs::exists(*place, error)) Write(*place, "\xFF\xFE");
  CopySettings(setting.file, root);
  return root;
}

fs::path ScratchMachine::MakeBareMachine() const {
  fs::path root = MakeRoot(m_folder / "bare");
  Write(root / "machine.ini", "");
  return root;
}

peers::SettingFileContent ReadSettingsOfCopy() {
  const fs::path file = peers::FindSettingPlace().file;
  std::error_code error;
  if (!fs::exists(fs::symlink_status(file, error))) return {};
  const ScratchMachine scratch;
  const fs::path root = scratch.CopyMachine();
  const auto copy = PlaceIn(root, file);
  if (!copy || !fs::exists(*copy, error)) return ReadSettings();
  return peers::ReadSettingFile(*copy);
}

}  // namespace app
