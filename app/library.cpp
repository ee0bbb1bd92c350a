#include "app/library.h"

#include <filesystem>
#include <stdexcept>

#include "platform/module.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr wchar_t kLibrary[] = L"libSigilSetting.so";

template <class Operation>
void LookUp(HMODULE library, const char* name, Operation& operation) {
  const FARPROC address = GetProcAddress(library, name);
  if (address == nullptr) throw std::runtime_error(std::string(name) + ": not in the library");
  // By way of the type of no function in particular, which the compiler takes as meant.
  operation = reinterpret_cast<Operation>(reinterpret_cast<void (*)()>(address));
}

}  // namespace

Exports LoadExports() {
  const std::wstring path = BesideHost(kLibrary);
  const HMODULE library = LoadLibraryW(path.c_str());
  if (library == nullptr)
    throw std::runtime_error(platform::ToUtf8(path) + ": the library cannot be loaded (error " +
                             std::to_string(GetLastError()) + ")");
  Exports exports{};
  LookUp(library, "SigilSettingReleaseWaterMark", exports.release);
  LookUp(library, "SigilSettingSetWaterMark", exports.set);
  LookUp(library, "SigilSettingUpdateWaterMarkSetting", exports.update);
  LookUp(library, "SigilSettingReleaseWaterMarkForService", exports.releaseForService);
  LookUp(library, "SigilSettingSetUseContentLog", exports.setUseContentLog);
  LookUp(library, "SigilSettingUpdateExcludePrinter", exports.updateExclude);
  return exports;
}

std::wstring BesideHost(const std::wstring& fileName) {
  const auto host = std::filesystem::read_symlink("/proc/self/exe");
  return platform::FromUtf8(host.parent_path().string()) + L"/" + fileName;
}

}  // namespace app
