#include "app/machine/user_file.h"

#include <stdexcept>

#include "app/machine/home.h"
#include "app/text/input.h"
#include "host/shared_names.h"
#include "platform/profile.h"
#include "platform/utf.h"

namespace app {
namespace {

std::wstring FindUserFile() {
  const auto folder = SettingFolder();
  return folder ? *folder + kUserInformationName : L"";
}

std::string StateOf(const std::wstring& file) try {
  const auto bytes = ReadInput(HostPath(file), kGreatestRowFile);
  if (!bytes) return "not there yet";
  if (bytes->starts_with("\xFF\xFE")) return "UTF-16";
  return "not UTF-16, so a name may lose letters; remove it";
} catch (const std::runtime_error& error) {
  return std::string("unreadable: ") + error.what();
}

}  // namespace

void LayUserFile() try {
  if (const std::wstring file = FindUserFile(); !file.empty()) LayUserFile(file);
} catch (const std::exception&) {
  // Where the folder is unknown, there is nothing to lay.
}

UserFile ExamineUserFile() {
  UserFile user;
  user.path = FindUserFile();
  if (user.path.empty()) {
    user.state = "unknown, without the component";
    return user;
  }
  user.state = StateOf(user.path);
  user.hasFullName = GetPrivateProfileIntW(kUserSection, kUserStateKey, 0, user.path.c_str()) != 0;
  wchar_t name[256] = {};
  GetPrivateProfileStringW(kUserSection, kUserFullNameKey, L"", name, 256, user.path.c_str());
  user.fullName = platform::ToUtf8(name);
  return user;
}

}  // namespace app
