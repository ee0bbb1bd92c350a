#pragma once

// The users of the Linux system.

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace platform {

struct SystemUser {
  std::wstring login;
  std::wstring fullName;  ///< The comment field up to its first comma.
};

/// Returns null when the database has no such user or cannot be read.
std::optional<SystemUser> FindUser(uid_t number);
std::optional<SystemUser> FindUser(std::wstring_view login);

}  // namespace platform
