#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "app/machine/home.h"
#include "app/machine/user_file.h"
#include "peers/settings_component/setting_file.h"
#include "platform/posix/ansi.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"

namespace app {
namespace {

/// Returns the full names that the machine's accounts have for its user. Throws std::system_error
/// when machine.ini cannot be read.
std::vector<std::string> FullNames() {
  const platform::Machine machine = platform::LoadMachine();
  std::vector<std::string> names;
  for (const platform::AccountList& list : machine.accountLists)
    for (const platform::Account& account : list.accounts)
      if (account.fullName && platform::SameName(account.login, machine.user))
        names.push_back(platform::ToUtf8(*account.fullName));
  if (const auto user = platform::FindUser(machine.user))
    names.push_back(platform::ToUtf8(user->fullName));
  return names;
}

}  // namespace

std::optional<std::wstring> SettingFolder() {
  return peers::FindSettingPlace().folder;
}

void LayUserFile(const std::wstring& file) {
  const platform::Descriptor opened = platform::Open(HostPath(file), O_WRONLY | O_CREAT);
  struct stat status = {};
  if (!opened || fstat(opened.Get(), &status) != 0 || status.st_size != 0) return;
  // A failure leaves the file empty, as it was.
  [[maybe_unused]] const ssize_t written = write(opened.Get(), "\xFF\xFE", 2);
}

std::string NameBefore(const std::string& stored) {
  static const std::vector<std::string> names = FullNames();
  const auto found = std::ranges::find_if(names, [&](const std::string& name) {
    const std::string passed =
        platform::ToUtf8(platform::FromAnsi(platform::ToAnsi(platform::FromUtf8(name))));
    return name != stored && passed == stored;
  });
  return found == names.end() ? "" : *found;
}

}  // namespace app
