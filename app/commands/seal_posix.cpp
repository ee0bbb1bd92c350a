#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "app/commands/seal.h"
#include "app/machine/client.h"
#include "app/machine/output_file.h"
#include "app/machine/policy_file.h"
#include "app/machine/policy_text.h"
#include "app/rehearsal/refusal.h"
#include "app/text/input_file.h"
#include "app/text/text_file.h"
#include "app/text/usage_error.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"
#include "platform/visible_text.h"

namespace app {
namespace {

void RequireKey() {
  const KeyState key = ExamineKey();
  if (!key.isThere || !key.gives)
    throw UsageError(platform::ToUtf8(KeySource()) + ": " + key.source);
}

std::string SealedText(const std::wstring& text, const std::string& file) {
  std::string sealed = Seal(platform::ToUtf8(text));
  try {
    RequireSize(sealed.size(), kGreatestSealedPolicy);
  } catch (const std::runtime_error& error) {
    throw UsageError(file + ": sealed, " + error.what());
  }
  return sealed;
}

/// What will be switched is not what was rehearsed; empty when it is.
std::string OtherScope(const std::wstring& text, int policyId) {
  const PolicyText policy = ReadPolicy(text);
  if (!policy.refusal.empty()) return "";
  if (!HasSwitchingPolicy(policy))
    return "set goes by policy 1, which this text has not; it counts as scope 0";
  if (policyId == 1) return "";
  return "set goes by policy 1 of this text, not by " + std::to_string(policyId);
}

void Tell(std::size_t size, const std::string& place) {
  std::cout << "seal: " << size << " bytes in " << platform::Visible(place) << ".\n";
}

}  // namespace

void SealPolicy(const std::string& file, const std::string& output, int policyId, bool isForced) {
  const std::wstring text = ReadTextFile(file);
  RequireKey();
  const std::string sealed = SealedText(text, NameOf(file));
  const Verdict verdict = RefuseOrTell(text, NameOf(file), policyId, Use::kDelivery, isForced);
  if (output.empty()) {
    const DeliveryFolder delivery = FindDeliveryFolder();
    WriteOutput(platform::HostPath(delivery.PolicyFile()), sealed);
    Tell(sealed.size(), platform::ToUtf8(delivery.PolicyFile()) + " (" + delivery.origin + ")");
  } else {
    WriteOutput(output, sealed);
    Tell(sealed.size(), output);
  }
  for (const std::string& line : verdict.lines)
    std::cout << "  " << platform::Visible(line) << "\n";
  if (const std::string other = OtherScope(text, policyId); !other.empty())
    std::cerr << "sigilctl: warning: " << NameOf(file) << ": " << other << ".\n";
}

}  // namespace app
