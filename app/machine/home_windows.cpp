#include <windows.h>
// After windows.h.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "app/machine/home.h"
#include "platform/utf.h"
#include "platform/windows/host_folder.h"

namespace app {

const wchar_t kLibrary[] = L"SigilSetting.dll";
const wchar_t kLog[] = L"log4cxx.dll";

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

}  // namespace app
