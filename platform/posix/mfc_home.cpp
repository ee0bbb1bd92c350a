#include <filesystem>

#include "platform/mfc/home.h"
#include "platform/posix/handle.h"
#include "platform/posix/machine/letter_case.h"
#include "platform/posix/machine/machine.h"

namespace platform {

bool IsSameText(LPCWSTR left, LPCWSTR right) {
  return SameName(left, right);
}

std::FILE* OpenToRead(LPCWSTR path, bool /*isShared*/) {
  return OpenToRead(HostPath(path).c_str());
}

std::optional<ULONGLONG> SizeOf(LPCWSTR path) {
  if (*path == L'\0') return std::nullopt;
  std::error_code error;
  const std::filesystem::path file = HostPath(path);
  const auto type = std::filesystem::status(file, error).type();
  if (error || type == std::filesystem::file_type::not_found) return std::nullopt;
  if (type != std::filesystem::file_type::regular) return 0;
  const ULONGLONG size = std::filesystem::file_size(file, error);
  return error ? std::nullopt : std::optional(size);
}

}  // namespace platform
