#pragma once

// The Linux machine: a folder that holds what a Windows machine has, and a file in it, machine.ini,
// that tells what a Windows machine knows by itself.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The folder of the machine: the environment variable SIGIL_ROOT, else `sigil/machine` in the
/// user's data folder.
std::filesystem::path MachineRoot();

/// Where the file of a Windows path lies: `C:\a\b` in `<root>/C/a/b`. Both `\` and `/` part pieces,
/// but a path that begins with `/` is one of Linux and left alone. A path without a drive is one of
/// `C:\`; `..` never leaves a drive. Pieces that exist only in other upper and lower case are found
/// as Windows finds them.
std::filesystem::path HostPath(std::wstring_view windowsPath);

/// The path of the name in `folder` that Windows would find: without regard to case, but as it is
/// when there is none.
std::filesystem::path FindName(const std::filesystem::path& folder, std::wstring_view name);

struct Printer {
  std::wstring name;
  std::wstring driver;
  std::optional<std::wstring> comment;
};

struct Account {
  std::wstring login;
  std::optional<std::wstring> fullName;
};

/// The accounts of one server; those of the machine itself have no server name.
struct AccountList {
  std::wstring server;
  std::vector<Account> accounts;
};

struct Machine {
  std::wstring user;
  std::wstring domain;  ///< Or the workgroup.
  bool joined = false;
  std::wstring controller;  ///< Empty: none answers.
  std::vector<AccountList> accountLists;
  std::vector<Printer> printers;
};

/// Reads machine.ini anew. A missing file is a machine with no printers and accounts of its own.
/// Throws std::system_error when the file is there and cannot be read.
Machine LoadMachine();

/// Whether two names are of one server, with or without their leading backslashes.
bool SameServer(std::wstring_view left, std::wstring_view right);

}  // namespace platform
