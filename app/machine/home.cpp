#include "app/machine/home.h"

#include <filesystem>
#include <system_error>

#include "platform/utf.h"

namespace app {
namespace {

std::string Fault(const std::wstring& path, DWORD error) {
  std::error_code ignored;
  if (!std::filesystem::exists(HostPath(path), ignored))
    return "is missing; put it beside sigilctl";
  const std::string number = " (error " + std::to_string(error) + ")";
  if (error == ERROR_BAD_EXE_FORMAT)
    return "is there, but is no " + std::to_string(8 * sizeof(void*)) + "-bit library" + number;
  if (error == ERROR_MOD_NOT_FOUND)
    return "is there, but a library that it needs is missing" + number;
  return "is there, but cannot be loaded" + number;
}

Part Load(const std::wstring& fileName) {
  const std::wstring path = BesideHost(fileName);
  Part part;
  part.module = Owner<HMODULE, Unload>(LoadLibraryW(path.c_str()));
  if (!part.module) part.fault = Fault(path, GetLastError());
  return part;
}

}  // namespace

Part LoadPart(const std::wstring& fileName) {
  static const Part log = Load(kLog);
  if (fileName == kLog || log.fault.empty()) return Load(fileName);
  return {{}, "cannot be loaded: " + platform::ToUtf8(kLog) + " " + log.fault};
}

}  // namespace app
