#include <memory>
#include <string>

#include "app/machine/log_file.h"
#include "app/text/errors.h"
#include "app/text/file_windows.h"
#include "peers/logging/log_path_windows.h"
#include "platform/mfc.h"
#include "platform/utf.h"

namespace app {
namespace {

std::size_t Read(const File& file, char* block, std::size_t size) {
  DWORD count = 0;
  if (!ReadFile(file.Get(), block, static_cast<DWORD>(size), &count, nullptr))
    throw std::runtime_error("the log cannot be read (error " + std::to_string(GetLastError()) +
                             ")");
  return count;
}

/// The size of the file at the path; 0 where there is none.
ULONGLONG SizeAt(const std::wstring& path) {
  CFileStatus status;
  return CFile::GetStatus(path.c_str(), status) ? status.m_size : 0;
}

}  // namespace

LogSource OpenLog() {
  const std::wstring path = logging::LogFile();
  File opened = OpenToRead(path);
  if (!opened) {
    const DWORD error = GetLastError();
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    throw UsageError(platform::ToUtf8(path) + ": " +
                     (isMissing ? "there is no log yet"
                                : "cannot be opened (error " + std::to_string(error) + ")"));
  }
  const auto file = std::make_shared<File>(std::move(opened));
  return [file](char* block, std::size_t size) { return Read(*file, block, size); };
}

LogSource FollowLog() {
  const std::wstring path = logging::LogFile();
  const auto file = std::make_shared<File>(OpenToRead(path));
  return [path, file, place = ULONGLONG{0}](char* block, std::size_t size) mutable {
    for (constexpr DWORD kTick = 100;; Sleep(kTick)) {
      const ULONGLONG seen = SizeAt(path);
      const std::size_t count = *file ? Read(*file, block, size) : 0;
      place += count;
      if (count > 0) return count;
      // The file at the path had another size before this one ended, so it is another one.
      if (seen == place) continue;
      *file = OpenToRead(path);
      place = 0;
    }
  };
}

}  // namespace app
