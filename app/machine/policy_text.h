#pragma once

// What the passes read of a policy's text before they register anything, by the same XML service.

#include <cstddef>
#include <optional>
#include <string>

namespace app {

/// The policy by whose scope set and release go.
inline constexpr int kSwitchingPolicy = 1;

struct PolicyText {
  std::string refusal;     ///< Why the passes refuse the text; empty when they don't.
  bool hasPolicy = false;  ///< There is a policy of the number.
  std::optional<std::wstring> scope =
      {};                  ///< The text of its PrinterScope; nothing where it has none.
  std::size_t listed = 0;  ///< How many element IDs it lists.
};

/// Reads the policy of that number. Throws nothing: a failure of the XML service is a refusal.
PolicyText ReadPolicy(const std::wstring& text, int policyId = kSwitchingPolicy);

/// Returns where a scope switches the watermarks on.
std::string ScopeMeaning(int scope);

}  // namespace app
