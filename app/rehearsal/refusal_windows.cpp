#include "app/machine/policy_text.h"
#include "app/rehearsal/refusal.h"
#include "app/text/errors.h"

namespace app {
namespace {

/// Empty for a policy that may go. There is no scratch machine here, so this is all that can be
/// known before the call.
std::string Refusal(const PolicyText& text, int policyId) {
  if (!text.refusal.empty() || text.listed > 0) return text.refusal;
  return "there is no element of a policy " + std::to_string(policyId) +
         ": every entry would be emptied";
}

}  // namespace

Verdict RefuseOrTell(const std::wstring& text, const std::string& file, int policyId, Use /*use*/,
                     Care care, bool /*resetName*/) {
  const PolicyText read = ReadPolicy(text, policyId);
  const std::string refusal = Refusal(read, policyId);
  if (!refusal.empty() && !care.isForced)
    throw UsageError(file + ": " + refusal + ". " +
                     (read.refusal.empty() ? kForceDoes : kCostOfForce));
  Verdict verdict;
  verdict.elements = read.listed;
  verdict.cause = read.refusal;
  return verdict;
}

}  // namespace app
