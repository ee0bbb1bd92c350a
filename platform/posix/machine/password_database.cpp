#include "platform/posix/machine/password_database.h"

#include <pwd.h>

#include <cerrno>
#include <vector>

#include "platform/utf.h"

namespace platform {

namespace {

/// `find` is a reentrant look-up, which fails with ERANGE when its buffer is too small.
template <typename Find>
std::optional<SystemUser> Look(Find find) {
  constexpr std::size_t kMost = 1 << 20;
  passwd entry;
  passwd* found = nullptr;
  int error = ERANGE;
  std::vector<char> buffer;
  for (std::size_t size = 1 << 10; error == ERANGE && size <= kMost; size *= 2) {
    buffer.resize(size);
    error = find(&entry, buffer.data(), size, &found);
  }
  if (error != 0 || found == nullptr) return std::nullopt;
  const std::string_view comment = found->pw_gecos == nullptr ? "" : found->pw_gecos;
  return SystemUser{FromUtf8(found->pw_name), FromUtf8(comment.substr(0, comment.find(',')))};
}

}  // namespace

std::optional<SystemUser> FindUser(uid_t number) {
  return Look([number](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwuid_r(number, entry, buffer, size, found);
  });
}

std::optional<SystemUser> FindUser(std::wstring_view login) {
  const std::string name = ToUtf8(login);
  return Look([&name](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwnam_r(name.c_str(), entry, buffer, size, found);
  });
}

}  // namespace platform
