#include <algorithm>

#include "app/machine/policy_text.h"
#include "app/rehearsal/refusal.h"
#include "app/text/errors.h"

namespace app {
namespace {

/// Empty for a policy that may go. There is no scratch machine here, so this is all that can be
/// known before the call.
std::string Refusal(const PolicyText& text, int policyId, std::size_t elements) {
  if (!text.refusal.empty()) return text.refusal;
  if (elements > 0) return "";
  return "there is no element of a policy " + std::to_string(policyId) +
         ": every entry would be emptied";
}

}  // namespace

Verdict RefuseOrTell(const std::wstring& text, const std::string& file, int policyId, Use /*use*/,
                     bool isForced, bool /*resetName*/) {
  const PolicyText read = ReadPolicy(text);
  const auto policy = std::ranges::find(read.policies, std::to_wstring(policyId), &Policy::id);
  Verdict verdict;
  if (policy != read.policies.end()) verdict.elements = policy->elementIds.size();
  const std::string refusal = Refusal(read, policyId, verdict.elements);
  if (!refusal.empty() && !isForced)
    throw UsageError(file + ": " + refusal + ". " +
                     (read.refusal.empty() ? kForceDoes : kCostOfForce));
  verdict.cause = read.refusal;
  return verdict;
}

}  // namespace app
