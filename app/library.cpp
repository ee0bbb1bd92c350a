#include "app/library.h"

#include <filesystem>
#include <stdexcept>

#include "peers/logging/log_watch.h"
#include "platform/module.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr wchar_t kLibrary[] = L"libSigilSetting.so";
constexpr wchar_t kLog[] = L"liblog4cxx.so";

HMODULE Load(const wchar_t* fileName) {
  const std::wstring path = BesideHost(fileName);
  const HMODULE library = LoadLibraryW(path.c_str());
  if (library == nullptr)
    throw std::runtime_error(platform::ToUtf8(path) + ": the library cannot be loaded (error " +
                             std::to_string(GetLastError()) + ")");
  return library;
}

template <class Operation>
void LookUp(HMODULE library, const char* name, Operation& operation) {
  const FARPROC address = GetProcAddress(library, name);
  if (address == nullptr) throw std::runtime_error(std::string(name) + ": not in the library");
  // By way of the type of no function in particular, which the compiler takes as meant.
  operation = reinterpret_cast<Operation>(reinterpret_cast<void (*)()>(address));
}

Exports LoadExports() {
  const HMODULE library = Load(kLibrary);
  Exports exports{};
  LookUp(library, "SigilSettingReleaseWaterMark", exports.release);
  LookUp(library, "SigilSettingSetWaterMark", exports.set);
  LookUp(library, "SigilSettingUpdateWaterMarkSetting", exports.update);
  LookUp(library, "SigilSettingReleaseWaterMarkForService", exports.releaseForService);
  LookUp(library, "SigilSettingSetUseContentLog", exports.setUseContentLog);
  LookUp(library, "SigilSettingUpdateExcludePrinter", exports.updateExclude);
  return exports;
}

/// Gathers the messages of its lifetime.
class Watch {
 public:
  explicit Watch(std::vector<Message>& messages) {
    LookUp(Load(kLog), "SigilWatchLog", m_setWatcher);
    s_messages = &messages;
    m_setWatcher(&Take);
  }
  ~Watch() { m_setWatcher(nullptr); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  static void Take(int level, int number, const wchar_t* function, const wchar_t* text) {
    s_messages->push_back({level, number, platform::ToUtf8(function), platform::ToUtf8(text)});
  }

  static inline std::vector<Message>* s_messages = nullptr;
  SigilWatchLogFunction* m_setWatcher = nullptr;
};

}  // namespace

Outcome Call(const ExportCall& call) {
  const Exports exports = LoadExports();
  Outcome outcome;
  const Watch watch(outcome.messages);
  outcome.result = call(exports);
  return outcome;
}

std::wstring BesideHost(const std::wstring& fileName) {
  const auto host = std::filesystem::read_symlink("/proc/self/exe");
  return platform::FromUtf8(host.parent_path().string()) + L"/" + fileName;
}

}  // namespace app
