#include <windows.h>

#include "app/machine/parts.h"
#include "app/machine/user_file.h"
#include "component/names.h"
#include "component/reference.h"
#include "component/sigil_interfaces.h"

namespace app {
namespace {

void Close(HANDLE file) {
  CloseHandle(file);
}

std::wstring FolderOf(Sigil::CreateInstanceFunction create) {
  Sigil::CReference<Sigil::Settings> settings;
  if (CallForeign(create, &Sigil::kSettingsFirstIdentity, &Sigil::kSettingsSecondIdentity,
                  reinterpret_cast<void**>(settings.Out())) != 0 ||
      !settings)
    return L"";
  wchar_t folder[MAX_PATH] = {};
  std::uint32_t length = MAX_PATH;
  if (Sigil::Failed(settings->GetSettingFileDir(folder, &length))) return L"";
  folder[MAX_PATH - 1] = L'\0';
  return folder;
}

}  // namespace

std::wstring SettingFolder() {
  const Part component = LoadPart(kComponentFile);
  const auto create = Function<Sigil::CreateInstanceFunction>(component, kCreateInstanceName);
  if (create == nullptr) return L"";
  try {
    return FolderOf(create);
  } catch (...) {
    return L"";  // It is the component's exception, and the pass meets it too.
  }
}

void LayUserFile(const std::wstring& file) {
  // No one writes between the look at the size and the mark.
  const Owner<HANDLE, Close, INVALID_HANDLE_VALUE> opened(CreateFileW(
      file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!opened || GetFileSize(opened.Get(), nullptr) != 0) return;
  DWORD written = 0;
  WriteFile(opened.Get(), "\xFF\xFE", 2, &written, nullptr);
}

}  // namespace app
