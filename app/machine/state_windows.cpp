#include <stdexcept>

#include "app/machine/state.h"
#include "app/text/file_windows.h"
#include "app/text/wording.h"
#include "component/names.h"
#include "host/shared_names.h"
#include "platform/utf.h"

namespace app {
namespace {

std::string WithLastError(const std::string& what) {
  return WithError(what, GetLastError());
}

std::string NameFrom(BOOL WINAPI name(LPWSTR, LPDWORD)) {
  wchar_t text[257];
  DWORD capacity = 257;
  return name(text, &capacity) ? platform::ToUtf8(text) : WithLastError("unknown");
}

/// It may be the suite's, whose file nobody else knows.
std::string ExamineLog() {
  const Part log = LoadPart(kLog);
  if (!log.fault.empty()) return log.fault;
  const bool canWatch = GetProcAddress(log.module.Get(), "SigilWatchLog") != nullptr;
  return canWatch ? "found" : "found; it cannot be watched from here";
}

/// Asks without connecting, which the control service could take for an event.
DWORD AskControlPipe() {
  constexpr DWORD kNoTime = 1;  // milliseconds
  if (WaitNamedPipeW(kControlPipe, kNoTime)) return ERROR_SUCCESS;
  return GetLastError() == ERROR_SEM_TIMEOUT ? ERROR_PIPE_BUSY : GetLastError();
}

}  // namespace

/// Opens the mutex alone if it is there, with the access that a pass asks for: taking it could hold
/// up a pass.
std::string WhyNoMutex() {
  const HANDLE mutex = OpenMutexW(MUTEX_ALL_ACCESS, FALSE, kSettingMutexName);
  if (mutex == nullptr && GetLastError() == ERROR_ACCESS_DENIED)
    return WithLastError("this account may not open the one that is there");
  if (mutex == nullptr)
    return GetLastError() == ERROR_FILE_NOT_FOUND ? "" : WithLastError("cannot be opened");
  CloseHandle(mutex);
  return "";
}

/// Asks for the access to write the user file, or to make it, and does neither. Returns why this
/// account does not get it; empty when it does, or where the folder is still to come.
std::string WhyUnstored(const std::filesystem::path& file) {
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  if (OpenFile(file, GENERIC_WRITE, kAll, OPEN_EXISTING)) return "";
  if (GetLastError() == ERROR_PATH_NOT_FOUND) return "";
  if (GetLastError() != ERROR_FILE_NOT_FOUND)
    return WithLastError(platform::ToUtf8(file.filename().wstring()) + " cannot be written");
  if (OpenFile(file.parent_path(), FILE_ADD_FILE, kAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS))
    return "";
  return WithLastError("no file can be made in its folder");
}

std::vector<PrinterState> ListPrinters() {
  constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
  std::vector<PRINTER_INFO_2W> block;
  DWORD needed = 0, count = 0;
  while (!EnumPrintersW(kFlags, nullptr, 2, reinterpret_cast<BYTE*>(block.data()),
                        static_cast<DWORD>(block.size() * sizeof block[0]), &needed, &count)) {
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER)
      throw std::runtime_error(WithLastError("the spooler gives none"));
    block.resize(needed / sizeof block[0] + 1);
  }
  std::vector<PrinterState> printers;
  for (DWORD i = 0; i < count; ++i)
    printers.push_back(
        {block[i].pPrinterName, block[i].pDriverName, SigilSettingManagement::KindOf(block[i])});
  return printers;
}

// Nothing can be told of it before a call.
SettingState ExamineSettingFile() {
  return {.state = "the component's own", .place = "", .unsaved = ""};
}

// There is no machine.ini, no file is refused for what it is, and where the log writes is its own.

std::vector<RefusedPlace> RefusedPlaces() {
  return {};
}

std::string WhatIsUnread() {
  return "";
}

std::string WhyLogLost() {
  return "";
}

void ExamineMachine(MachineState& state) {
  state.user = NameFrom(GetUserNameW);
  try {
    state.printers = ListPrinters();
  } catch (const std::runtime_error& error) {
    state.noPrinters = error.what();
  }
  state.settingFile = ExamineSettingFile();
  state.userFile = ExamineUserFile();
  if (!state.userFile.path.empty()) state.unstoredName = WhyUnstored(state.userFile.path);
  state.log = ExamineLog();
  state.logFile = platform::ToUtf8(BesideHost(kLog));
  state.pipeError = AskControlPipe();
}

std::string NameBefore(const std::string& /*stored*/) {
  return "";
}

}  // namespace app
