#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <system_error>

#include "app/machine/output_file.h"
#include "app/text/errors.h"
#include "app/text/file_windows.h"

namespace app {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void Fail(const fs::path& file) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), file.string());
}

/// Removes its file unless that has been moved.
struct Draft {
  ~Draft() { DeleteFileW(path.c_str()); }
  fs::path path;
};

}  // namespace

void WriteOutput(const fs::path& file, std::string_view bytes) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (fs::exists(status) && !fs::is_regular_file(status))
    throw UsageError(file.string() + ": not a regular file");
  const Draft draft{fs::path(file) += L"." + std::to_wstring(GetCurrentProcessId())};
  File opened = OpenFile(draft.path, GENERIC_WRITE, 0, CREATE_NEW);
  DWORD written = 0;
  if (!opened ||
      !WriteFile(opened.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
    Fail(file);
  opened.Reset();
  if (!MoveFileExW(draft.path.c_str(), file.c_str(),
                   MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    Fail(file);
}

void PrintBytes(std::string_view bytes) {
  std::cout << std::flush;
  const int before = _setmode(_fileno(stdout), _O_BINARY);
  std::cout << bytes << std::flush;
  _setmode(_fileno(stdout), before);
}

}  // namespace app
