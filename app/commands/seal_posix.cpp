#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "app/commands/commands.h"
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
  std::string sealed = SealText(platform::ToUtf8(text));
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

struct Options {
  std::string file;
  std::string output;  ///< Empty: WmPolicy.dat in the machine's delivery folder.
  int policyId = 1;    ///< The policy that will be applied.
  bool isForced = false;
};

/// Makes a policy file of the policy text, under the machine's key. Throws UsageError when the text
/// or the key will not do, and unless forced for a policy that a rehearsal finds unfit.
int Seal(const Options& options) {
  const std::wstring text = ReadTextFile(options.file);
  const std::string name = NameOf(options.file);
  RequireKey();
  const std::string sealed = SealedText(text, name);
  const Verdict verdict =
      RefuseOrTell(text, name, options.policyId, Use::kDelivery, options.isForced);
  if (options.output.empty()) {
    const DeliveryFolder delivery = FindDeliveryFolder();
    WriteOutput(platform::HostPath(delivery.PolicyFile()), sealed);
    Tell(sealed.size(), platform::ToUtf8(delivery.PolicyFile()) + " (" + delivery.origin + ")");
  } else {
    WriteOutput(options.output, sealed);
    Tell(sealed.size(), options.output);
  }
  for (const std::string& line : verdict.lines)
    std::cout << "  " << platform::Visible(line) << "\n";
  if (const std::string other = OtherScope(text, options.policyId); !other.empty())
    std::cerr << "sigilctl: warning: " << name << ": " << other << ".\n";
  return 0;
}

}  // namespace

void AddSeal(CommandLine& line) {
  const auto options = std::make_shared<Options>();
  CLI::App& command = line.Add("seal", "Makes the delivered policy file of a policy",
                               [options] { return Seal(*options); });
  AddPolicyFile(command, options->file);
  AddOutput(command, options->output, "FILE", "Another place for it");
  AddPolicyId(command, options->policyId);
  AddForce(command, options->isForced);
}

}  // namespace app
