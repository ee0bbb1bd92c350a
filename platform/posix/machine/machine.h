#pragma once

// The Linux machine: a folder that holds what a Windows machine has, and a file in it, machine.ini,
// that tells what a Windows machine knows by itself.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The folder of the machine: the environment variable SIGIL_ROOT, else `sigil/machine` in the
/// user's data folder.
std::filesystem::path MachineRoot();

/// Where the file of a Windows path lies: `C:\a\b` in `<root>/C/a/b`. Both `\` and `/` part pieces,
/// but a path that begins with `/` is one of Linux and needs no root. A path without a drive is one
/// of `C:\`; `..` never leaves a drive. Pieces that exist only in other upper and lower case are
/// found as Windows finds them.
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

/// A line of machine.ini that is not read as it stands.
struct UnreadLine {
  enum class Reason {
    kNoText,          ///< It is ill-formed in the file's encoding, or has a NUL.
    kNoSection,       ///< It stands before the first section.
    kUnknownSection,  ///< The header of a section that nobody reads, with all its lines.
    kSecondSection,   ///< The same of a section of which the first counts.
    kUnknownKey,      ///< Nobody reads an entry of this name.
    kSecondKey,       ///< An entry of which the first counts.
    kNoValue,         ///< There is no '=', where a value is read.
  };
  std::size_t number;  ///< From 1 on.
  std::wstring name;   ///< Of the entry, or "[...]" of the section.
  Reason reason;
  /// The names that are read in the place of one that nobody reads.
  std::span<const std::wstring_view> readHere = {};
};

/// Reads machine.ini anew, and tells the lines that the reading has made nothing of. A missing file
/// is a machine with no printers and accounts of its own. Throws std::system_error when the file is
/// there and cannot be read.
Machine LoadMachine(std::vector<UnreadLine>* unread = nullptr);

/// Whether two names are of one server, with or without their leading backslashes.
bool SameServer(std::wstring_view left, std::wstring_view right);

}  // namespace platform
