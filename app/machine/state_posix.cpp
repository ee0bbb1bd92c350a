#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "app/machine/state.h"
#include "app/text/wording.h"
#include "host/shared_names.h"
#include "peers/logging/log_path_posix.h"
#include "platform/file.h"
#include "platform/posix/ansi.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/machine/machine_file.h"
#include "platform/posix/machine/password_database.h"
#include "platform/utf.h"

namespace app {
namespace {

namespace fs = std::filesystem;

std::vector<PrinterState> PrintersOf(platform::Machine machine) {
  std::vector<PrinterState> printers;
  for (platform::Printer& printer : machine.printers) {
    PRINTER_INFO_2W record{};
    record.pDriverName = printer.driver.data();
    record.pComment = printer.comment ? printer.comment->data() : nullptr;
    printers.push_back({printer.name, printer.driver, SigilSettingManagement::KindOf(record)});
  }
  return printers;
}

/// "; is Driver= meant?", of an entry, or "; is [Printer B] meant?", of a section by its first
/// word; empty when nothing is like it.
std::string Meant(const platform::UnreadLine& line) {
  std::set<std::string> names;
  for (const std::wstring_view name : line.readHere) names.insert(platform::ToUtf8(name));
  const std::string name = platform::ToUtf8(line.name);
  const bool isSection = name.starts_with('[');
  const std::size_t end = isSection ? std::min(name.find_first_of(" ]"), name.size()) : name.size();
  const std::size_t begin = isSection ? 1 : 0;
  const std::string guess = Guess(name.substr(begin, end - begin), names);
  if (guess.empty()) return "";
  if (!isSection) return "; is " + guess + "= meant?";
  return "; is [" + guess + name.substr(end) + (name.ends_with(']') ? "" : "]") + " meant?";
}

std::string ReasonOf(const platform::UnreadLine& line) {
  switch (line.reason) {
    case platform::UnreadLine::Reason::kNoText:
      return "no UTF-8 text";
    case platform::UnreadLine::Reason::kSecond:
      return "another of its name counts";
    default:
      return "nobody reads it here" + Meant(line);
  }
}

void ExaminePrinters(MachineState& state) {
  try {
    std::vector<platform::UnreadLine> unread;
    platform::Machine machine = platform::LoadMachine(&unread);
    for (const platform::UnreadLine& each : unread)
      state.unread.push_back({{"line", each.number},
                              {"name", platform::ToUtf8(each.name)},
                              {"reason", ReasonOf(each)}});
    state.user = platform::ToUtf8(machine.user);
    state.printers = PrintersOf(std::move(machine));
  } catch (const std::system_error& error) {
    const std::string why = WhyRefused(platform::MachineRoot() / "machine.ini");
    state.noPrinters =
        "machine.ini " + (why.empty() ? "is unreadable: " + error.code().message() : why);
    state.user = "unknown: " + state.noPrinters;
    state.settingFile.state = state.userFile.state = "unknown, without a user";
    return;
  }
  state.userFile = ExamineUserFile();
  state.unstoredName = WhyUnstored(platform::HostPath(state.userFile.path));
  state.settingFile = ExamineSettingFile();
}

void ExamineLog(MachineState& state) {
  const fs::path file = logging::LogFile();
  std::error_code error;
  state.logFile = file.string();
  state.log = fs::is_regular_file(file, error)
                  ? std::to_string(fs::file_size(file, error)) + " bytes"
                  : "not there yet";
  if (const std::string why = WhyLogLost(); !why.empty()) state.log += "; lines get lost: " + why;
}

DWORD AskPipe() {
  const HANDLE pipe =
      CreateFileW(kControlPipe, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (pipe == INVALID_HANDLE_VALUE) return GetLastError();
  CloseHandle(pipe);
  return ERROR_SUCCESS;
}

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

std::vector<PrinterState> ListPrinters() {
  return PrintersOf(platform::LoadMachine());
}

std::string WhatIsUnread() {
  std::vector<platform::UnreadLine> unread;
  try {
    platform::LoadMachine(&unread);
  } catch (const std::system_error&) {
    return "";  // It is told of otherwise.
  }
  if (unread.empty()) return "";
  return Counted(unread.size(), "line", "lines") + " of machine.ini " +
         (unread.size() == 1 ? "is" : "are") + " not read; `sigilctl doctor` names " +
         (unread.size() == 1 ? "it." : "them.");
}

void ExamineMachine(MachineState& state) {
  ExaminePrinters(state);
  ExamineLog(state);
  state.pipeError = AskPipe();
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
