#include "app/pass/library.h"

#include <stdexcept>

#include "app/machine/home.h"
#include "app/machine/parts.h"
#include "peers/logging/log_watch.h"
#include "platform/utf.h"

namespace app {
namespace {

Part Load(const wchar_t* fileName) {
  Part part = LoadPart(fileName);
  if (!part.fault.empty())
    throw std::runtime_error(platform::ToUtf8(BesideHost(fileName)) + ": the library " +
                             part.fault);
  return part;
}

template <class Operation>
void LookUp(const Part& library, const char* name, Operation& operation) {
  operation = Function<Operation>(library, name);
  if (operation == nullptr) throw std::runtime_error(std::string(name) + ": not in the library");
}

Exports LoadExports() {
  static const Part library = Load(kLibrary);
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
  explicit Watch(std::vector<Message>& messages)
      : m_setWatcher(Function<SigilWatchLogFunction*>(Load(kLog), "SigilWatchLog")) {
    s_messages = &messages;
    if (m_setWatcher != nullptr) m_setWatcher(&Take);
  }
  ~Watch() {
    if (m_setWatcher != nullptr) m_setWatcher(nullptr);
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  explicit operator bool() const { return m_setWatcher != nullptr; }

 private:
  static void Take(int level, int number, const wchar_t* function, const wchar_t* text) {
    s_messages->push_back({level, number, platform::ToUtf8(function), platform::ToUtf8(text)});
  }

  static inline std::vector<Message>* s_messages = nullptr;
  SigilWatchLogFunction* const m_setWatcher;
};

}  // namespace

ExportCall UpdateCall(const std::wstring& text, int policyId, bool resetName) {
  return [=](const Exports& exports) {
    return exports.update(0, policyId, nullptr, text.c_str(), resetName ? 1 : 0);
  };
}

Outcome Call(const ExportCall& call) {
  const Exports exports = LoadExports();
  Outcome outcome;
  const Watch watch(outcome.messages);
  outcome.isWatched = static_cast<bool>(watch);
  outcome.result = call(exports);
  return outcome;
}

}  // namespace app
