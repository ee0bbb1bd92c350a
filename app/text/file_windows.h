#pragma once

#include <windows.h>

#include <filesystem>

#include "platform/owner.h"

namespace app {

inline void CloseFile(HANDLE file) {
  CloseHandle(file);
}

/// An open file; null when it could not be opened.
using File = Owner<HANDLE, CloseFile>;

inline File OpenFile(const std::filesystem::path& file, DWORD access, DWORD sharing,
                     DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL) {
  const HANDLE handle =
      CreateFileW(file.c_str(), access, sharing, nullptr, disposition, flags, nullptr);
  return File(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

/// Opens a file that others may write, move and delete meanwhile.
inline File OpenToRead(const std::filesystem::path& file) {
  return OpenFile(file, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  OPEN_EXISTING);
}

}  // namespace app
