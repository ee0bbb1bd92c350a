#include <share.h>

#include <string>

#include "platform/mfc/home.h"

namespace platform {

namespace {

std::wstring InCapitals(std::wstring text) {
  const int size = static_cast<int>(text.size());
  LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, text.c_str(), size, text.data(), size);
  return text;
}

}  // namespace

bool IsSameText(LPCWSTR left, LPCWSTR right) {
  return InCapitals(left) == InCapitals(right);
}

std::FILE* OpenToRead(LPCWSTR path, bool isShared) {
  return _wfsopen(path, L"rb", isShared ? _SH_DENYNO : _SH_DENYRW);
}

std::optional<ULONGLONG> SizeOf(LPCWSTR path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(path, GetFileExInfoStandard, &data)) return std::nullopt;
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return 0;
  return static_cast<ULONGLONG>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

}  // namespace platform
