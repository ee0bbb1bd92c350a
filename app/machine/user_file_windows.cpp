#include <filesystem>
#include <system_error>

#include "app/machine/parts.h"
#include "app/machine/user_file.h"
#include "app/text/file_windows.h"
#include "component/names.h"
#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace app {
namespace {

std::optional<std::wstring> FolderOf(Sigil::CreateInstanceFunction create) {
  Sigil::CReference<Sigil::Settings> settings;
  if (CallForeign(create, &Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity,
                  reinterpret_cast<void**>(settings.Out())) != 0 ||
      !settings)
    return std::nullopt;
  wchar_t folder[MAX_PATH] = {};
  std::uint32_t length = MAX_PATH;
  if (Sigil::Failed(settings->GetSettingFileDir(folder, &length))) return std::nullopt;
  folder[MAX_PATH - 1] = L'\0';
  return folder;
}

}  // namespace

std::optional<std::wstring> SettingFolder() {
  const Part component = LoadPart(kComponentFile);
  const auto create = Function<Sigil::CreateInstanceFunction>(component, kCreateInstanceName);
  if (create == nullptr) return std::nullopt;
  try {
    return FolderOf(create);
  } catch (...) {
    return std::nullopt;  // It is the component's exception, and the pass meets it too.
  }
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
