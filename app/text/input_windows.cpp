#include <windows.h>

#include <stdexcept>

#include "app/text/input.h"
#include "platform/owner.h"

namespace app {
namespace {

void Close(HANDLE file) {
  CloseHandle(file);
}

[[noreturn]] void Refuse() {
  throw std::runtime_error("cannot be read (error " + std::to_string(GetLastError()) + ")");
}

}  // namespace

// The passes themselves know no limit here.
const std::size_t kGreatestSealedPolicy = kGreatestPolicy + 1024 * 1024;

std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest) {
  const HANDLE handle = CreateFileW(file.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND)
      return std::nullopt;
    const DWORD error = GetLastError();
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
      throw std::runtime_error("not a regular file");
    SetLastError(error);
    Refuse();
  }
  const Owner<HANDLE, Close> opened(handle);
  if (GetFileType(handle) != FILE_TYPE_DISK) throw std::runtime_error("not a regular file");
  std::string bytes;
  char block[0x10000];
  for (DWORD size = 0;; bytes.append(block, size), RequireSize(bytes.size(), greatest)) {
    if (!ReadFile(handle, block, sizeof block, &size, nullptr)) Refuse();
    if (size == 0) return bytes;
  }
}

}  // namespace app
