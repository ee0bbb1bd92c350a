#include <stdexcept>

#include "app/text/file_windows.h"
#include "app/text/input.h"

namespace app {
namespace {

[[noreturn]] void Refuse() {
  throw std::runtime_error("cannot be read (error " + std::to_string(GetLastError()) + ")");
}

}  // namespace

// The passes themselves know no limit here.
const std::size_t kGreatestSealedPolicy = kGreatestPolicy + 1024 * 1024;

std::optional<std::string> ReadInput(const std::filesystem::path& file, std::size_t greatest) {
  const File opened = OpenToRead(file);
  if (!opened) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND)
      return std::nullopt;
    const DWORD error = GetLastError();
    const DWORD attributes = GetFileAttributesW(file.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
      throw std::runtime_error("not a regular file");
    SetLastError(error);
    Refuse();
  }
  if (GetFileType(opened.Get()) != FILE_TYPE_DISK) throw std::runtime_error("not a regular file");
  std::string bytes;
  char block[0x10000];
  for (DWORD size = 0;; bytes.append(block, size), RequireSize(bytes.size(), greatest)) {
    if (!ReadFile(opened.Get(), block, sizeof block, &size, nullptr)) Refuse();
    if (size == 0) return bytes;
  }
}

}  // namespace app
