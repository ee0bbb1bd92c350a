// The review of a policy, and who is let through: `RefuseOrTell` decides. The findings themselves
// are worded in findings.cpp, properties.cpp (of an element's properties) and sight.cpp (of the
// page).

#include "app/rehearsal/review.h"

#include <algorithm>

#include "app/machine/state.h"
#include "app/text/errors.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr std::size_t kMostOfAKind = 1000;
constexpr std::size_t kMostLines = 20;  // of a verdict
constexpr char kUntried[] = ": cannot be tried on this machine: ";
constexpr char kStrictness[] = "Nothing is changed; without --strict it is told and done.";
// The last sentence of a refusal. The first one is for a text that no pass can read, because a
// forced update clears the lists before it reads the text.
constexpr char kCostOfForce[] =
    "Nothing is changed; --force would clear the exclude list and the printers' own entries.";
constexpr char kForceDoes[] = "Nothing is changed; --force does it all the same.";

// Bounds that no policy of a real machine comes near. They keep each process under half a gigabyte,
// and a pass under half a minute.
constexpr std::size_t kMostNodes = 500'000;
constexpr std::size_t kMostMarks = 100'000;
constexpr std::size_t kMostQuoted = 20'000;  // because the library logs each query for one
constexpr std::size_t kMostMarkBytes = 64 * 1024 * 1024;
constexpr std::size_t kMostUserBytes = 255 * 3;  // of a user's name

[[noreturn]] void RefuseSize(const std::string& what, std::size_t most) {
  throw UsageError("the policy is too large to be rehearsed: it has more than " +
                   std::to_string(most) + " " + what);
}

void RequireFewNodes(const std::wstring& text) {
  const auto opens = [](wchar_t each) { return each == L'<' || each == L'='; };
  if (static_cast<std::size_t>(std::ranges::count_if(text, opens)) > kMostNodes)
    RefuseSize("tags and attributes", kMostNodes);
}

/// The entries of this machine that an update rebuilds: the default one, and the suite's printers.
std::size_t CountEntries() {
  return 1 + static_cast<std::size_t>(
                 std::ranges::count(ListPrinters(), PrinterKind::kSuite, &PrinterState::kind));
}

/// An update makes the watermarks of the policy's list on each entry.
void RequireFewMarks(const PolicyDocument& document, int policyId) {
  const PolicyPart* const policy = document.policies.Find(std::to_string(policyId));
  if (policy == nullptr) return;
  std::map<std::string_view, std::size_t> sizes;
  for (const PolicyPart& element : document.elements.All())
    for (const Property& property : element.properties)
      sizes[element.id] += property.text.size() + CountUsers(property.text) * kMostUserBytes;
  std::size_t bytes = 0;
  for (const Property& listed : policy->listed) bytes += sizes[listed.text] + listed.text.size();
  const std::size_t entries = CountEntries();
  if (policy->listed.size() * entries > kMostMarks)
    RefuseSize("watermarks on the entries of this machine", kMostMarks);
  const auto quoted = std::ranges::count_if(policy->listed, HasQuote, &Property::text);
  if (static_cast<std::size_t>(quoted) * entries > kMostQuoted)
    RefuseSize("watermarks of IDs with a quotation mark", kMostQuoted);
  if (bytes * entries > kMostMarkBytes)
    RefuseSize("bytes in the watermarks on the entries of this machine", kMostMarkBytes);
}

/// Empty for a policy that may go.
std::string Refusal(const Review& review, Use use) {
  if (!review.refusal.empty()) return review.refusal;
  if (use == Use::kDelivery && !review.undelivered.empty()) return review.undelivered;
  return review.emptied.empty() ? review.unseen : review.emptied + ": every entry would be emptied";
}

/// Throws UsageError at a finding, and for a policy that cannot be tried here.
void RequireFaultless(const Review& review, const std::string& file) {
  if (!review.failure.empty()) throw UsageError(file + kUntried + review.failure);
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
    lines.push_back(AndMore(left, "finding", "findings") + ", which `sigilctl check` tells");
  return lines;
}

}  // namespace

void Remarks::Add(Finding finding) {
  ++m_count;
  if (++m_counts[finding.kind] <= kMostOfAKind) m_kept.push_back(std::move(finding));
}

bool Remarks::HasRoom(const std::string& kind) {
  std::size_t& count = m_counts[kind];
  if (count < kMostOfAKind) return true;
  ++count;
  ++m_count;
  return false;
}

void Remarks::Close() {
  std::ranges::stable_sort(m_kept, {}, &Finding::line);
  for (const auto& [kind, count] : m_counts)
    if (count > kMostOfAKind)
      m_kept.push_back({kind, "and " + std::to_string(count - kMostOfAKind) + " more"});
}

std::string Remark(const Finding& finding, std::size_t width) {
  std::string subject = OneLine(finding.element, width);
  const std::string property = OneLine(finding.property, width);
  if (!property.empty()) subject += (subject.empty() ? "" : " ") + property;
  return subject + (subject.empty() ? "" : ": ") + finding.message;
}

std::string Line(const std::string& file, const Finding& finding) {
  const std::string line = finding.line > 0 ? std::to_string(finding.line) + ":" : "";
  return file + ":" + line + " " + Remark(finding, kTextWidth);
}

std::size_t Review::Registered() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      elements, [](const ElementFate& fate) { return fate.mark.has_value(); }));
}

std::set<std::string> Review::Ids() const {
  std::set<std::string> ids;
  for (const ElementFate& element : elements) ids.insert(element.id);
  return ids;
}

Review ReviewPolicy(const PolicyCall& call, const page::Paper& paper) {
  RequireFewNodes(call.text);
  if (std::string refusal = ReadPolicy(call.text).refusal; !refusal.empty())
    return {call.policyId, SIGIL_SETTING_FAILED, std::move(refusal)};
  const PolicyDocument document = ReadDocument(platform::ToUtf8(call.text));
  RequireFewMarks(document, call.policyId);
  return ReviewOf(call, document, Rehearse(call), paper);
}

Review ReviewSource(const PolicySource& source, int policyId, const page::Paper& paper) {
  Review review = ReviewPolicy({source.text, policyId}, paper);
  if (!review.refusal.empty()) throw UsageError(source.name + ": " + review.refusal);
  if (!review.failure.empty()) throw UsageError(source.name + kUntried + review.failure);
  return review;
}

Verdict RefuseOrTell(const PolicyCall& call, const std::string& file, Use use, Care care) try {
  const Review review = ReviewPolicy(call);
  const bool isRefused = !review.refusal.empty();
  const std::string refusal = Refusal(review, use);
  if (!refusal.empty() && !care.isForced)
    throw UsageError(file + ": " + refusal + ". " +
                     (isRefused && use == Use::kUpdate ? kCostOfForce : kForceDoes));
  if (care.isStrict) RequireFaultless(review, file);
  if (isRefused) return {{file + ": " + review.refusal}, {}, review.refusal};
  if (review.failure.empty())
    return {LinesOf(review, file), review.told, "", review.elements.size()};
  if (use == Use::kUpdate) return {};  // An update reports the failure itself.
  return {{file + kUntried + review.failure}};
} catch (const UsageError&) {
  throw;
} catch (const std::exception& error) {
  if (!care.isForced)
    throw std::runtime_error("no rehearsal could be held: " + CauseOf(error) +
                             ". --force goes on without one.");
  return {{"not rehearsed: " + CauseOf(error)}};
}

}  // namespace app
