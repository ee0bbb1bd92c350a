// What the component asks of Windows, apart from the setting file itself.

#include <objbase.h>
#include <windows.h>

#include <stdexcept>
#include <system_error>

#include "peers/settings_component/guid.h"
#include "peers/settings_component/store.h"

namespace peers {

namespace fs = std::filesystem;

std::string NewGuid() {
  GUID guid;
  if (FAILED(CoCreateGuid(&guid))) throw std::runtime_error("the system gives no GUID");
  return GuidText(guid);
}

fs::path Store::HostPath(std::wstring_view path) {
  return path;
}

void Store::MakeFolder(const fs::path& folder) {
  std::error_code ignored;
  fs::create_directories(folder, ignored);
}

/// The folder belongs to one process.
Store::LockHold Store::TakeLock(const fs::path& /*file*/, bool /*isForTurn*/) {
  return std::make_shared<bool>();
}

}  // namespace peers
