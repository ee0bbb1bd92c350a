#pragma once

// The scope of a policy: which of the component's entries its watermarks are meant for. A scope of
// 1 leaves the suite's printers out, one of 2 the default entry; every other number leaves none
// out.

#include <optional>

namespace SigilSettingManagement {

/// The name of the default entry, which stands for all printers without an entry of their own.
constexpr wchar_t kDefaultEntry[] = L"*";

constexpr bool IsDefaultEntryInScope(int scope) {
  return scope != 2;
}
constexpr bool AreSuitePrintersInScope(int scope) {
  return scope != 1;
}

/// The scope of policy 1 in the delivered policy file, read for SetWatermarkAllPrinter and logged
/// in its name. Nothing when the file is missing, cannot be decrypted or is refused by the reader,
/// and when the scope is -1. A missing scope is 0. Exceptions go to the caller.
std::optional<int> ReadDeliveredScope();

}  // namespace SigilSettingManagement
