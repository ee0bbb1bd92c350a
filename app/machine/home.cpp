#include "app/machine/home.h"

#include <system_error>

#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {
namespace {

std::string Fault(const std::wstring& path, DWORD error) {
  std::error_code ignored;
  if (!std::filesystem::exists(HostPath(path), ignored))
    return "is missing; put it beside sigilctl";
  std::string why = "cannot be loaded";
  if (error == ERROR_BAD_EXE_FORMAT)
    why = "is no " + std::to_string(8 * sizeof(void*)) + "-bit library";
  if (error == ERROR_MOD_NOT_FOUND) why = "a library that it needs is missing";
  return WithError("is there, but " + why, error);
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
