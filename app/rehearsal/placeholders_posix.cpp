#include <algorithm>

#include "app/rehearsal/placeholders.h"
#include "platform/posix/ansi.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"

namespace app {

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

std::string NameBefore(const std::string& stored, const std::vector<std::string>& names) {
  const auto isBefore = [&](const std::string& name) {
    const std::string passed =
        platform::ToUtf8(platform::FromAnsi(platform::ToAnsi(platform::FromUtf8(name))));
    return name != stored && passed == stored;
  };
  const auto found = std::ranges::find_if(names, isBefore);
  return found == names.end() ? "" : *found;
}

}  // namespace app
