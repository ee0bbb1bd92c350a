#include <shlobj.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "peers/logging/log_file.h"

namespace logging {
namespace {

constexpr wchar_t kLogFile[] = L"\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";

std::wstring LogFile() {
  wchar_t file[MAX_PATH * 4];
  const DWORD capacity = sizeof file / sizeof *file;
  const DWORD length = GetEnvironmentVariableW(L"SIGIL_LOG", file, capacity);
  if (length != 0 && length < capacity) return {file, length};
  if (!SHGetSpecialFolderPathW(nullptr, file, CSIDL_COMMON_APPDATA, FALSE)) return {};
  return std::wstring(file) + kLogFile;
}

HANDLE Open(const std::wstring& file) {
  return CreateFileW(file.c_str(), FILE_APPEND_DATA,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Makes each folder on the way to `file`; one that is there already stays.
void MakeFolders(const std::wstring& file) {
  for (std::size_t end = file.find(L'\\'); end != std::wstring::npos;
       end = file.find(L'\\', end + 1))
    CreateDirectoryW(file.substr(0, end).c_str(), nullptr);
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

void Append(std::string_view text) {
  const DWORD error = GetLastError();  // the caller may still want to know it
  const std::string line = Stamp() + std::string(text) + "\n";
  const std::wstring path = LogFile();
  HANDLE file = Open(path);
  if (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_PATH_NOT_FOUND) {
    MakeFolders(path);
    file = Open(path);
  }
  if (file != INVALID_HANDLE_VALUE) {
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
  }
  SetLastError(error);
}

}  // namespace logging
