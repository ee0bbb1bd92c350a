#pragma once

// What a policy text says, for people: read with the machine's XML service, as the passes read it.

#include <optional>
#include <string>
#include <vector>

namespace app {

struct PolicyElement {
  std::wstring id;
  std::wstring kind;
  std::wstring name;
};

struct Policy {
  std::wstring id;
  std::optional<std::wstring> scope;
  std::vector<std::wstring> elementIds;
};

struct PolicyText {
  std::string refusal;  ///< Why the passes refuse the text; empty when they don't.
  std::vector<Policy> policies;
  std::vector<PolicyElement> elements;
};

PolicyText ReadPolicy(const std::wstring& text);

/// Whether the text has the policy 1, by whose scope the switching passes go. Without it scope 0
/// counts.
bool HasSwitchingPolicy(const PolicyText& text);

}  // namespace app
