// The machines in a rehearsal's folder: a copy of the desk's own, and a bare one.

#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <stdexcept>
#include <system_error>

#include "app/machine/client.h"
#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/pass/messages.h"
#include "app/rehearsal/rehearse.h"
#include "host/shared_names.h"
#include "peers/descriptor.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/whole_file.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

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
void CopySettings(const std::string& file, const fs::path& root) {
  const auto copy = PlaceIn(root, file);
  if (!copy) return;
  try {
    for (const std::string& each : {file, file + "-wal"}) CopyFile(each, root);
    peers::ReadSettingFile(*copy);
  } catch (const std::exception&) {
    for (const std::string& each : {copy->string(), copy->string() + "-wal"}) fs::remove(each);
  }
}

/// Makes a machine like the one that the desk works on: its machine.ini, the files of its client
/// and the records of its setting file. Leaves out whatever cannot be read, except machine.ini, for
/// which std::system_error is thrown.
fs::path CopyMachine(const fs::path& folder) {
  fs::path root = MakeRoot(folder / "machine");
  CopyFile(platform::MachineRoot() / "machine.ini", root);
  for (const std::wstring& file : ClientFiles()) CopyIfReadable(platform::HostPath(file), root);
  const peers::SettingPlace setting = peers::FindSettingPlace();
  CopyIfReadable(platform::HostPath(setting.folder + kUserInformationName), root);
  CopySettings(setting.file, root);
  return root;
}

void EnterMachine(const fs::path& root) {
  setenv("SIGIL_ROOT", root.c_str(), 1);
  unsetenv("SIGIL_LOG");
  setenv("SIGIL_LOG_LEVEL", "9", 1);  // the messages are watched; nobody reads the scratch's log
}

}  // namespace

void ScratchMachine::Enter() const {
  EnterMachine(CopyMachine(m_folder));
}

std::string ScratchMachine::WhyUndelivered(const std::wstring& text) const {
  // Without printers, and without a key source, so that the key is zero.
  const fs::path root = MakeRoot(m_folder / "bare");
  Write(root / "machine.ini", "");
  EnterMachine(root);
  const DeliveryFolder delivery = FindDeliveryFolder();
  Write(platform::HostPath(delivery.PolicyFile()), SealText(platform::ToUtf8(text)));
  Write(platform::HostPath(delivery.SystemSetting()), "63,1\r\n");
  const Outcome outcome = Call([](const Exports& exports) { return exports.set(); });
  if (outcome.result != SIGIL_SETTING_FAILED) return "";
  const auto isFailure = [](const Message& message) {
    return MeaningOf(message).weight == Weight::kFailure;
  };
  const std::vector<Message> troubles = Troubles(outcome.messages);
  const auto first = std::ranges::find_if(troubles, isFailure);
  if (first == troubles.end() || !RefusesDelivery(*first))
    throw std::runtime_error("set could not be tried: " + FirstFailure(troubles).sentence);
  return MeaningOf(*first).sentence;
}

peers::SettingFileContent ReadSettingsOfCopy() {
  const fs::path file = peers::FindSettingPlace().file;
  std::error_code error;
  if (!fs::exists(fs::symlink_status(file, error))) return {};
  const ScratchMachine scratch;
  const auto copy = PlaceIn(CopyMachine(scratch.Folder()), file);
  return copy && fs::exists(*copy, error) ? peers::ReadSettingFile(*copy) : ReadSettings();
}

}  // namespace app
