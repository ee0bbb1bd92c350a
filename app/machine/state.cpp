#include "app/machine/state.h"

#include <stdexcept>

#include "app/machine/function_switch.h"
#include "app/machine/home.h"
#include "app/machine/policy_file.h"
#include "app/machine/policy_text.h"
#include "component/names.h"
#include "platform/crt.h"
#include "platform/module.h"

namespace app {
namespace {

/// The first scope that a policy with the number 1 gives; 0 without any, as the passes take it.
int ScopeOf(const PolicyText& policy) {
  for (const Policy& each : policy.policies)
    if (each.id == L"1" && each.scope) return _wtoi(each.scope->c_str());
  return 0;
}

void ExaminePolicy(MachineState& state) {
  const KeyState key = ExamineKey();
  state.keySource = key.source;
  if (!key.gives) {
    state.policyFile = "not opened, without a key";
    return;
  }
  std::optional<Unsealed> unsealed;
  try {
    unsealed = Unseal(state.delivery.PolicyFile());
  } catch (const std::runtime_error& error) {
    state.policyFile = std::string("unreadable: ") + error.what();
    return;
  }
  state.policyFile = unsealed ? std::to_string(unsealed->size) + " bytes" : "missing";
  if (!unsealed) return;
  const PolicyText policy = ReadPolicy(unsealed->text);
  if (!policy.refusal.empty()) {
    state.policyFile += IsNoise(unsealed->text, policy)
                            ? std::string("; ") + kOtherKey + " (" + policy.refusal + ")"
                            : "; under this key, " + policy.refusal;
    return;
  }
  state.policyFile += ", readable";
  state.scope = ScopeOf(policy);
  state.hasSwitchingPolicy = HasSwitchingPolicy(policy);
}

std::string ExamineComponent() {
  const std::wstring path = BesideHost(kComponentFile);
  const HMODULE component = LoadLibraryW(path.c_str());
  if (component == nullptr)
    return "cannot be loaded (error " + std::to_string(GetLastError()) + ")";
  const bool hasEntry = GetProcAddress(component, kCreateInstanceName) != nullptr;
  FreeLibrary(component);
  return hasEntry ? "" : "has no SigilCreateInstance";
}

}  // namespace

MachineState Examine() {
  MachineState state;
  state.delivery = FindDeliveryFolder();
  ExaminePolicy(state);
  state.functionSwitch = ReadFunctionSwitch(state.delivery.SystemSetting());
  state.component = ExamineComponent();
  ExamineMachine(state);
  return state;
}

}  // namespace app
