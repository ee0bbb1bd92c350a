#include "app/rehearsal/scratch_machine.h"

#include <stdlib.h>
#include <unistd.h>

#include <optional>
#include <system_error>

#include "app/machine/client.h"
#include "host/shared_names.h"
#include "peers/descriptor.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// Where a file of the machine lies below its root; nothing for one that lies elsewhere, which the
/// rehearsal finds as the machine does.
std::optional<fs::path> BelowRoot(const fs::path& file) {
  fs::path place = file.lexically_relative(platform::MachineRoot());
  if (place.empty() || *place.begin() == "..") return std::nullopt;
  return place;
}

void CopyFile(const fs::path& file, const ScratchMachine& machine) {
  const auto place = BelowRoot(file);
  if (!place) return;
  if (const auto bytes = platform::ReadWholeFile(file)) machine.Write(*place, *bytes);
}

void CopyIfReadable(const fs::path& file, const ScratchMachine& machine) {
  try {
    CopyFile(file, machine);
  } catch (const std::system_error&) {
    // The library goes on without it too.
  }
}

/// Byte by byte, with the log of what is not in it yet: opening the machine's own would leave
/// traces beside it. What cannot be read is left out, and so is a copy that is no setting file, as
/// the file is damaged or changed at that moment.
void CopySettings(const fs::path& file, const ScratchMachine& machine) {
  const fs::path log = file.string() + "-wal";
  try {
    CopyFile(file, machine);
    CopyFile(log, machine);
    if (const auto place = BelowRoot(file)) peers::ReadSettingFile(machine.Root() / *place);
  } catch (const std::exception&) {
    for (const fs::path& each : {file, log})
      if (const auto place = BelowRoot(each)) fs::remove(machine.Root() / *place);
  }
}

/// In memory where that can be had: what a rehearsal saves is not to wait for a disk.
fs::path ScratchFolder() {
  if (const char* const named = getenv("TMPDIR")) return fs::canonical(named);
  const fs::path memory = "/dev/shm";
  return access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::path("/tmp");
}

fs::path MakeFolder() {
  std::string name = (ScratchFolder() / "sigil-rehearsal-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) peers::ThrowSystemError(name);
  return name;
}

}  // namespace

HeldSignals::HeldSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&held, signal);
  pthread_sigmask(SIG_BLOCK, &held, &m_before);
}

HeldSignals::~HeldSignals() {
  pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

ScratchMachine::ScratchMachine() : m_root(MakeFolder()) {}

ScratchMachine::~ScratchMachine() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
}

void ScratchMachine::Write(const fs::path& file, const std::string& bytes) const {
  const fs::path target = m_root / file;
  fs::create_directories(target.parent_path());
  platform::ChangeWholeFile(target, [&](const auto&) { return bytes; });
}

void ScratchMachine::CopyMachine() const {
  CopyFile(platform::MachineRoot() / "machine.ini", *this);
  for (const std::wstring& file : ClientFiles()) CopyIfReadable(platform::HostPath(file), *this);
  const peers::SettingPlace setting = peers::FindSettingPlace();
  CopyIfReadable(platform::HostPath(setting.folder + kUserInformationName), *this);
  CopySettings(setting.file, *this);
}

}  // namespace app
