#pragma once

#include <windows.h>

#include <string>

namespace platform {

/// Returns the folder of the host's executable, of any length, with a backslash behind it.
inline std::wstring HostFolder() {
  std::wstring path(MAX_PATH, L'\0');
  while (GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())) == path.size())
    path.resize(2 * path.size());
  return path.substr(0, path.rfind(L'\\') + 1);
}

}  // namespace platform
