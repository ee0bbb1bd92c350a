// What the room asks of Windows: files as a whole, and the console.

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "app/text/file_windows.h"
#include "app/text/files.h"
#include "app/text/table.h"
#include "app/text/wording.h"

namespace app {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(DWORD error) {
  throw std::runtime_error(WithError("cannot be read", error));
}

[[noreturn]] void Fail(const fs::path& file) {
  const DWORD error = GetLastError();
  throw std::runtime_error(WithError(file.string() + ": cannot be written", error));
}

/// Removes its file, if it has one, unless that has been moved.
struct Draft {
  ~Draft() { DeleteFileW(path.c_str()); }
  fs::path path;
};

using Ranges = std::initializer_list<std::pair<char32_t, char32_t>>;

// Windows has no call for this. The ranges are the blocks of East Asia and of pictures, and the
// combining marks of scripts that a printer or policy is likely to be named in.
constexpr Ranges kWide = {{0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0xA4CF},
                          {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},  {0xFE30, 0xFE6F},
                          {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
                          {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
constexpr Ranges kMarks = {{0x0300, 0x036F}, {0x200B, 0x200F}, {0x3099, 0x309A}, {0xFE00, 0xFE0F}};

bool IsIn(char32_t character, const Ranges& ranges) {
  return std::ranges::any_of(ranges, [character](const auto& range) {
    return range.first <= character && character <= range.second;
  });
}

}  // namespace

// The passes themselves know no limit here.
const std::size_t kGreatestSealedPolicy = kGreatestPolicy + 1024 * 1024;

std::optional<std::string> ReadInput(const fs::path& file, std::size_t greatest) {
  const File opened = OpenToRead(file);
  if (!opened) {
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return std::nullopt;
    std::error_code ignored;
    if (fs::is_directory(file, ignored)) throw std::runtime_error(kNotRegular);
    Refuse(error);
  }
  if (GetFileType(opened.Get()) != FILE_TYPE_DISK) throw std::runtime_error(kNotRegular);
  std::string bytes;
  char block[0x10000];
  for (DWORD size = 0;; bytes.append(block, size), RequireSize(bytes.size(), greatest)) {
    if (!ReadFile(opened.Get(), block, sizeof block, &size, nullptr)) Refuse(GetLastError());
    if (size == 0) return bytes;
  }
}

void ReplaceOutput(const fs::path& file, std::string_view bytes) {
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

void BeginFile(const fs::path& file, std::string_view bytes) {
  std::error_code ignored;
  fs::create_directories(file.parent_path(), ignored);
  // No one writes between the look at the size and the bytes.
  const File opened = OpenFile(file, GENERIC_WRITE, 0, OPEN_ALWAYS);
  DWORD written = 0;
  if (opened && GetFileSize(opened.Get(), nullptr) == 0)
    WriteFile(opened.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void PrintBytes(std::string_view bytes) {
  std::cout << std::flush;
  const int before = _setmode(_fileno(stdout), _O_BINARY);
  std::cout << bytes << std::flush;
  _setmode(_fileno(stdout), before);
}

std::size_t CharacterWidth(char32_t character) {
  if (IsIn(character, kMarks)) return 0;
  return IsIn(character, kWide) ? 2 : 1;
}

std::size_t ConsoleColumns() {
  CONSOLE_SCREEN_BUFFER_INFO console = {};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &console)) return 0;
  // A line that fills the whole width would be followed by an empty one.
  return static_cast<std::size_t>(console.srWindow.Right - console.srWindow.Left);
}

bool IsTerminal(std::FILE* stream) {
  CONSOLE_SCREEN_BUFFER_INFO console;
  return GetConsoleScreenBufferInfo(
      GetStdHandle(stream == stdout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE), &console);
}

}  // namespace app
