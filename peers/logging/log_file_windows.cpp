#include <windows.h>
// After windows.h.
#include <sddl.h>

#include <cstdio>
#include <cwchar>
#include <string>

#include "peers/logging/log_file.h"
#include "peers/logging/log_path_windows.h"

namespace logging {
namespace {

// The file is made by the account that logs first. All others of the machine read and append, and
// only the system and administrators may do more.
constexpr wchar_t kAccess[] = L"D:(A;;FA;;;SY)(A;;FA;;;BA)(A;;0x12008D;;;BU)";

/// Keeps the thread's last error, which the caller of the log may still want to know.
class LastError {
 public:
  LastError() = default;
  ~LastError() { SetLastError(m_error); }
  LastError(const LastError&) = delete;
  LastError& operator=(const LastError&) = delete;

 private:
  const DWORD m_error = GetLastError();
};

HANDLE Open(const std::wstring& file, DWORD disposition, SECURITY_ATTRIBUTES* access) {
  return CreateFileW(file.c_str(), FILE_APPEND_DATA,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, access, disposition,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Makes each folder on the way to `file`; one that is there already stays.
void MakeFolders(const std::wstring& file) {
  for (std::size_t end = file.find(L'\\'); end != std::wstring::npos;
       end = file.find(L'\\', end + 1))
    CreateDirectoryW(file.substr(0, end).c_str(), nullptr);
}

/// Opens the file, which another process may make at the same time.
HANDLE Make(const std::wstring& file) {
  MakeFolders(file);
  SECURITY_ATTRIBUTES access = {sizeof access, nullptr, FALSE};
  const bool isKnown = ConvertStringSecurityDescriptorToSecurityDescriptorW(
      kAccess, SDDL_REVISION_1, &access.lpSecurityDescriptor, nullptr);
  const HANDLE made = Open(file, OPEN_ALWAYS, isKnown ? &access : nullptr);
  LocalFree(access.lpSecurityDescriptor);
  return made;
}

std::string Stamp() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d %lu ", now.wYear, now.wMonth,
                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                GetCurrentProcessId());
  return text;
}

}  // namespace

int LowestLevel() {
  const LastError kept;
  return _wtoi(Variable(L"SIGIL_LOG_LEVEL").c_str());
}

void Append(std::string_view text) {
  const LastError kept;
  const std::string line = Stamp() + std::string(text) + "\n";
  const std::wstring path = LogFile();
  HANDLE file = Open(path, OPEN_EXISTING, nullptr);
  if (file == INVALID_HANDLE_VALUE &&
      (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND))
    file = Make(path);
  if (file == INVALID_HANDLE_VALUE) return;
  DWORD written = 0;
  WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
  CloseHandle(file);
}

}  // namespace logging
