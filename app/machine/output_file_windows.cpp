#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

#include "app/machine/output_file.h"
#include "app/text/errors.h"
#include "app/text/file_windows.h"

namespace app {

namespace fs = std::filesystem;

namespace {

/// Throws with the number of the error, because its text is in the ANSI code page.
[[noreturn]] void Fail(const fs::path& file) {
  const std::string number = std::to_string(GetLastError());
  throw std::runtime_error(file.string() + ": cannot be written (error " + number + ")");
}

/// Removes its file, if it has one, unless that has been moved.
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
  const fs::path name = fs::path(file) += L"." + std::to_wstring(GetCurrentProcessId());
  Draft draft;
  File opened = OpenFile(name, GENERIC_WRITE, 0, CREATE_NEW);
  if (!opened) Fail(file);
  draft.path = name;  // not before, because a file that was there is somebody else's
  DWORD written = 0;
  if (!WriteFile(opened.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
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
