#pragma once

// The Linux machine: a folder with the files of a Windows machine. The file machine.ini in it holds
// the facts that Windows would be asked for: printers, the user, the domain, accounts.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Returns the folder of the machine: the environment variable SIGIL_ROOT, else `sigil/machine` in
/// the user's data folder.
std::filesystem::path MachineRoot();

/// Returns the Linux path of a Windows path: `<root>/C/a/b` for `C:\a\b`. Both `\` and `/` separate
/// names, but a path that begins with `/` is a Linux path already. A path without a drive is on C.
/// `..` never leaves a drive. Names are found without regard to case.
std::filesystem::path HostPath(std::wstring_view windowsPath);

/// Returns the path of the name in `folder`, found without regard to case. A name that does not
/// exist keeps its case.
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

/// The accounts of one server. The machine itself has an empty server name.
struct AccountList {
  std::wstring server;
  std::vector<Account> accounts;
};

struct Machine {
  std::wstring user;
  std::wstring domain;  ///< The domain or the workgroup.
  bool joined = false;
  std::wstring controller;  ///< Empty if no controller answers.
  std::vector<AccountList> accountLists;
  std::vector<Printer> printers;
};

/// A line of machine.ini that has no effect.
struct UnreadLine {
  enum class Reason {
    kNoText,  ///< Ill-formed in the file's encoding, or with a NUL.
    kUnread,  ///< Nobody reads such an entry, or a section of this name, in its place.
    kSecond,  ///< Another entry or section of its name counts.
  };
  std::size_t number;  ///< From 1 on.
  std::wstring name;   ///< The entry's name, or "[...]" for a section.
  Reason reason;
  /// The names that are read in its place, where nobody reads this one.
  std::span<const std::wstring_view> readHere = {};
};

/// Reads machine.ini, and puts the lines without effect into `unread`. A missing file is a machine
/// without printers and accounts. Of two sections of one printer the first counts. Throws
/// std::system_error when the file cannot be read.
Machine LoadMachine(std::vector<UnreadLine>* unread = nullptr);

/// Returns whether two names mean one server, with or without their leading backslashes.
bool SameServer(std::wstring_view left, std::wstring_view right);

}  // namespace platform
