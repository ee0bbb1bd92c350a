#include "app/machine/findings.h"

#include <stdexcept>

#include "app/machine/function_switch.h"
#include "app/machine/home.h"
#include "app/machine/policy_file.h"
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

void ExaminePolicy(Findings& findings) {
  const KeyState key = ExamineKey();
  findings.keySource = key.source;
  if (!key.gives) {
    findings.policyFile = "not opened, without a key";
    return;
  }
  std::optional<Unsealed> unsealed;
  try {
    unsealed = Unseal(findings.delivery.PolicyFile());
  } catch (const std::runtime_error& error) {
    findings.policyFile = std::string("unreadable: ") + error.what();
    return;
  }
  findings.policyFile = unsealed ? std::to_string(unsealed->size) + " bytes" : "missing";
  if (!unsealed) return;
  PolicyText policy = ReadPolicy(unsealed->text);
  if (!policy.refusal.empty()) {
    findings.policyFile += IsNoise(unsealed->text, policy)
                               ? std::string("; ") + kOtherKey + " (" + policy.refusal + ")"
                               : "; under this key, " + policy.refusal;
    return;
  }
  findings.policyFile += ", readable";
  findings.scope = ScopeOf(policy);
  findings.policy = std::move(policy);
}

std::string ExamineComponent() {
  const std::wstring path = BesideHost(L"SigilUtil_x86.dll");
  const HMODULE component = LoadLibraryW(path.c_str());
  if (component == nullptr)
    return "cannot be loaded (error " + std::to_string(GetLastError()) + ")";
  const bool hasEntry = GetProcAddress(component, "SigilCreateInstance") != nullptr;
  FreeLibrary(component);
  return hasEntry ? "" : "has no SigilCreateInstance";
}

}  // namespace

Findings Examine() {
  Findings findings;
  findings.delivery = FindDeliveryFolder();
  ExaminePolicy(findings);
  findings.functionSwitch = ReadFunctionSwitch(findings.delivery.SystemSetting());
  findings.component = ExamineComponent();
  ExamineMachine(findings);
  return findings;
}

}  // namespace app
