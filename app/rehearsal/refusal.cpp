#include "app/rehearsal/refusal.h"

#include "app/rehearsal/review.h"
#include "app/text/errors.h"

namespace app {
namespace {

constexpr std::size_t kMostLines = 20;
constexpr char kStrictness[] = "Nothing is changed; without --strict it is told and done.";

/// Empty for a policy that may go.
std::string Refusal(const Review& review, Use use) {
  if (!review.refusal.empty()) return review.refusal;
  if (use == Use::kDelivery && !review.undelivered.empty()) return review.undelivered;
  return review.emptied.empty() ? review.unseen : review.emptied + ": every entry would be emptied";
}

/// Throws UsageError at a finding, and for a policy that cannot be tried here.
void RequireFaultless(const Review& review, const std::string& file) {
  if (!review.failure.empty())
    throw UsageError(file + ": cannot be tried on this machine: " + review.failure);
  const std::size_t count = review.findings.Count();
  if (count == 0) return;
  const std::string others =
      count == 1 ? "" : " (the first of " + std::to_string(count) + " findings)";
  throw UsageError(Line(file, review.findings.Kept().front()) + others + ". " + kStrictness);
}

std::vector<std::string> LinesOf(const Review& review, const std::string& file) {
  std::vector<std::string> lines;
  for (const Finding& finding : review.findings.Kept())
    if (lines.size() < kMostLines) lines.push_back(Line(file, finding));
  if (const std::size_t left = review.findings.Count() - lines.size(); left > 0)
    lines.push_back("and " + std::to_string(left) + " findings more, which `sigilctl check` tells");
  return lines;
}

}  // namespace

Verdict RefuseOrTell(const std::wstring& text, const std::string& file, int policyId, Use use,
                     Care care, bool resetName) try {
  const Review review = ReviewPolicy({text, policyId, resetName});
  const std::string refusal = Refusal(review, use);
  const bool isCostly = use == Use::kUpdate && !review.refusal.empty();
  if (!refusal.empty() && !care.isForced)
    throw UsageError(file + ": " + refusal + ". " + (isCostly ? kCostOfForce : kForceDoes));
  if (care.isStrict) RequireFaultless(review, file);
  Verdict verdict;
  if (!review.failure.empty()) return verdict;
  verdict.cause = review.refusal;
  verdict.elements = review.elements.size();
  verdict.told = review.told;
  verdict.lines = LinesOf(review, file);
  if (!review.refusal.empty()) verdict.lines = {file + ": " + review.refusal};
  return verdict;
} catch (const UsageError&) {
  throw;
} catch (const std::exception& error) {
  if (!care.isForced)
    throw std::runtime_error("no rehearsal could be held: " + CauseOf(error) +
                             ". --force goes on without one.");
  return {{"not rehearsed: " + CauseOf(error)}, {}, "", 0};
}

}  // namespace app
