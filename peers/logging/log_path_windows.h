#pragma once

#include <windows.h>
// After windows.h.
#include <shlobj.h>

#include <string>

namespace logging {

// kLogFile below the common data folder, which need not lie on drive C.
inline constexpr wchar_t kBelowCommonData[] =
    L"\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";

/// Empty when it is not set, or too long for any use here.
inline std::wstring Variable(const wchar_t* name) {
  wchar_t value[MAX_PATH * 4];
  const DWORD capacity = sizeof value / sizeof *value;
  const DWORD length = GetEnvironmentVariableW(name, value, capacity);
  return length < capacity ? std::wstring(value, length) : std::wstring();
}

/// Returns the path of the log file at this moment (see log_file.h); empty where it is unknown.
inline std::wstring LogFile() {
  std::wstring named = Variable(L"SIGIL_LOG");
  if (!named.empty()) return named;
  wchar_t folder[MAX_PATH];
  if (!SHGetSpecialFolderPathW(nullptr, folder, CSIDL_COMMON_APPDATA, FALSE)) return {};
  return std::wstring(folder) + kBelowCommonData;
}

}  // namespace logging
