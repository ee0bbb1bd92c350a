#pragma once

// The scope of a policy: the entries of the component on which its watermarks are on. A scope of 1
// leaves the suite's printers out, a scope of 2 the default entry; every other number leaves none
// out.

#include <optional>

namespace SigilSettingManagement {

/// The name of the default entry, which serves all printers that have no entry.
constexpr wchar_t kDefaultEntry[] = L"*";

constexpr bool IsDefaultEntryInScope(int scope) {
  return scope != 2;
}
constexpr bool AreSuitePrintersInScope(int scope) {
  return scope != 1;
}

/// Returns the scope of policy 1 in the delivered policy file, 0 where it states none. Returns
/// nothing when the file is missing, cannot be decrypted or is refused by the reader, and when the
/// scope is -1. Logs in the name of SetWatermarkAllPrinter. Exceptions go to the caller.
std::optional<int> ReadDeliveredScope();

}  // namespace SigilSettingManagement
