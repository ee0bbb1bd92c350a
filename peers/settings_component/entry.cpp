// The module's entry points.

#include "peers/settings_component/object.h"
#include "platform/module.h"

namespace {

bool Asked(const GUID* first, const GUID* second, const GUID& wantedFirst,
           const GUID& wantedSecond) {
  return *first == wantedFirst && *second == wantedSecond;
}

}  // namespace

extern "C" {

MODULE_EXPORT std::int32_t SigilCreateInstance(const GUID* first, const GUID* second, void** out) {
  if (first == nullptr || second == nullptr || out == nullptr) return Sigil::kCannotCreate;
  *out = nullptr;
  return peers::Guarded([&]() -> std::int32_t {
    if (Asked(first, second, Sigil::kSettingsFirstIdentity, Sigil::kSettingsSecondIdentity))
      *out = peers::CreateSettings();
    if (Asked(first, second, Sigil::kStringFirstIdentity, Sigil::kStringSecondIdentity))
      *out = peers::CreateString();
    return *out == nullptr ? Sigil::kCannotCreate : Sigil::kSuccess;
  });
}

/// Does nothing, because there is one store only.
MODULE_EXPORT std::int32_t SigilMergeUserStoreWatermarks() {
  return Sigil::kSuccess;
}

/// Returns the date of the interfaces as the decimal number YYYYMMDD.
MODULE_EXPORT std::int32_t SigilGetVersionDate() {
  return 20241124;
}
}
