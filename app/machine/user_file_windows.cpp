#include <filesystem>
#include <system_error>

#include "app/machine/component.h"
#include "app/machine/user_file.h"
#include "app/text/file_windows.h"

namespace app {
std::optional<std::wstring> SettingFolder() try {
  const Component component;
  if (!component.fault.empty()) return std::nullopt;
  wchar_t folder[MAX_PATH] = {};
  std::uint32_t length = MAX_PATH;
  if (Sigil::Failed(component.settings->GetSettingFileDir(folder, &length))) return std::nullopt;
  folder[MAX_PATH - 1] = L'\0';
  return folder;
} catch (...) {
  return std::nullopt;  // It is the component's exception, and the pass meets it too.
}

void LayUserFile(const std::wstring& file) {
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(file).parent_path(), ignored);
  // No one writes between the look at the size and the mark.
  const File opened = OpenFile(file, GENERIC_WRITE, 0, OPEN_ALWAYS);
  DWORD written = 0;
  if (opened && GetFileSize(opened.Get(), nullptr) == 0)
    WriteFile(opened.Get(), "\xFF\xFE", 2, &written, nullptr);
}

}  // namespace app
