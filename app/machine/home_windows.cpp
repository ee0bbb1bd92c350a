#include <windows.h>
// After windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdlib>
#include <memory>

#include "app/machine/home.h"
#include "app/text/errors.h"
#include "app/text/file_windows.h"
#include "app/text/wording.h"
#include "peers/logging/log_path_windows.h"
#include "platform/mfc.h"
#include "platform/utf.h"
#include "platform/windows/host_folder.h"

namespace app {

const wchar_t kLibrary[] = L"SigilSetting.dll";
const wchar_t kLog[] = L"log4cxx.dll";

const char kEnvironment[] =
    "Policies are rehearsed (check, diff, preview, report, seal, update, verify):\n"
    "applied by the library itself, in a private folder below the account's\n"
    "application data that goes again, with components of its own. A rehearsal\n"
    "reads the machine's printers and names, and takes its mutex as any pass does.\n"
    "\n"
    "Environment:\n"
    "  SIGIL_LOG        the file of the log that comes with this program\n"
    "  SIGIL_LOG_LEVEL  the lowest level that is written to it (0)\n";

const char kMendMutex[] =
    "A process of another account or of a higher integrity level has it: end that process, or run "
    "this one as that one runs.";
const char kMendPrinters[] = "See to the machine's printers and its spooler.";
const char kMendAccount[] = "See to the account on this machine or in the directory.";

namespace {

UINT g_codePageBefore = 0;

/// At Ctrl-C and its like, which end the process without its exit functions.
BOOL WINAPI RestoreConsole(DWORD /*event*/) {
  SetConsoleOutputCP(g_codePageBefore);
  return FALSE;
}

/// Gives the console UTF-8 for the life of this process.
void UseUtf8OnConsole() {
  g_codePageBefore = GetConsoleOutputCP();
  std::atexit([] { RestoreConsole(0); });
  SetConsoleCtrlHandler(RestoreConsole, TRUE);
  SetConsoleOutputCP(CP_UTF8);
}

std::size_t Read(const File& file, char* block, std::size_t size) {
  DWORD count = 0;
  if (!ReadFile(file.Get(), block, static_cast<DWORD>(size), &count, nullptr))
    throw std::runtime_error(WithError("the log cannot be read", GetLastError()));
  return count;
}

/// The size of the file at the path; 0 where there is none.
ULONGLONG SizeAt(const std::wstring& path) {
  CFileStatus status;
  return CFile::GetStatus(path.c_str(), status) ? status.m_size : 0;
}

}  // namespace

std::vector<std::string> Arguments(int /*argc*/, char** /*argv*/) {
  _setmode(_fileno(stdin), _O_BINARY);
  UseUtf8OnConsole();

  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  if (words == nullptr) throw std::runtime_error("the command line cannot be read");
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(platform::ToUtf8(words[i]));
  LocalFree(words);
  return arguments;
}

const bool kMachineIsFolder = false;

void UseMachine(const std::string& /*folder*/) {}

void RequireMachine() {}

std::string HostName() {
  wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
  DWORD capacity = MAX_COMPUTERNAME_LENGTH + 1;
  return GetComputerNameW(name, &capacity) ? platform::ToUtf8(name) : "unknown";
}

std::string MachineName() {
  return HostName();
}

std::filesystem::path HostPath(std::wstring_view windowsPath) {
  return windowsPath;
}

std::wstring BesideHost(const std::wstring& fileName) {
  return platform::HostFolder() + fileName;
}

LogSource OpenLog() {
  const std::wstring path = logging::LogFile();
  File opened = OpenToRead(path);
  if (!opened) {
    const DWORD error = GetLastError();
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw UsageError(platform::ToUtf8(path) + ": " +
                     (isMissing ? "there is no log yet" : WithError("cannot be opened", error)));
  }
  const auto file = std::make_shared<File>(std::move(opened));
  return [file](char* block, std::size_t size) { return Read(*file, block, size); };
}

LogSource FollowLog() {
  const std::wstring path = logging::LogFile();
  const auto file = std::make_shared<File>(OpenToRead(path));
  return [path, file, place = ULONGLONG{0}](char* block, std::size_t size) mutable {
    for (constexpr DWORD kTick = 100;; Sleep(kTick)) {
      const ULONGLONG seen = SizeAt(path);
      const std::size_t count = *file ? Read(*file, block, size) : 0;
      place += count;
      if (count > 0) return count;
      // The file at the path had another size before this one ended, so it is another one.
      if (seen == place) continue;
      *file = OpenToRead(path);
      place = 0;
    }
  };
}

}  // namespace app
