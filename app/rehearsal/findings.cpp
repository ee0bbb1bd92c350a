// The findings of a rehearsed policy: its document, ID by ID, against the watermarks and the
// messages of the pass.

#include <algorithm>

#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/rehearsal/review.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "platform/crt.h"
#include "platform/utf.h"

namespace app {
namespace {

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error("the rehearsal is incomplete: " + what);
}

/// Throws when the pass has failed at something for which the policy is not to blame, as when the
/// memory ends.
void RequireWhole(const PolicyPart* policy, const std::vector<Message>& messages,
                  const std::vector<Message>& troubles) {
  const bool canBeUnread =
      policy != nullptr && std::ranges::any_of(policy->listed, HasQuote, &Property::text);
  if (!canBeUnread && std::ranges::find(messages, Step::kUnread, StepOf) != messages.end())
    Fail("the policy could not be read");
  for (const Message& trouble : troubles)
    if (const Meaning meaning = MeaningOf(trouble); meaning.weight == Weight::kFailure)
      Fail(meaning.sentence);
}

/// Returns the messages of the update's first walk over the policy's list, one of each ID.
std::vector<Message> WalkIn(const std::vector<Message>& messages) {
  std::vector<Message> walk;
  std::size_t entries = 0;
  for (const Message& message : messages) {
    const Step step = StepOf(message);
    if (step == Step::kEntry && ++entries > 1) break;
    if (step == Step::kMade || step == Step::kDropped) walk.push_back(message);
  }
  return walk;
}

/// Pairs the IDs of the list with what the pass registered in the default entry. Throws when the
/// counts differ, because the pairs would be wrong.
std::vector<ElementFate> FatesOf(const PolicyDocument& document, const PolicyPart& policy,
                                 const Rehearsal& rehearsal) {
  const std::vector<Message> walk = WalkIn(rehearsal.messages);
  if (walk.size() != policy.listed.size())
    Fail("it tells of " + std::to_string(walk.size()) + " of " +
         std::to_string(policy.listed.size()) + " IDs");
  std::map<std::string, const peers::WatermarkRecord*> marks;
  if (const auto* entry = FindEntry(rehearsal.records, "*"))
    for (const peers::WatermarkRecord& mark : entry->watermarks) marks[mark.id] = &mark;
  std::vector<ElementFate> fates;
  std::set<std::string_view> ids;
  for (std::size_t i = 0; i < walk.size(); ++i) {
    const auto& [name, id, line] = policy.listed[i];
    const PolicyPart* const element = document.elements.Find(id);
    ElementFate& fate =
        fates.emplace_back(ElementFate{id, element == nullptr ? line : element->lines.front(),
                                       element != nullptr && !HasQuote(id), ids.insert(id).second});
    const auto made = MadeMarkIn(walk[i]);
    if (!made) {
      fate.reason = walk[i];
    } else if (const auto mark = marks.find(made->guid); mark != marks.end()) {
      fate.mark = *mark->second;
      fate.isStamp = made->isStamp;
    }
  }
  return fates;
}

/// `element` is null where the policy has none of the ID.
void ReviewDropped(const ElementFate& fate, const PolicyPart* element, Remarks& findings) {
  if (!findings.HasRoom("dropped")) return;
  std::string why = "the pass does not say why";
  if (fate.reason) {
    why = MeaningOf(*fate.reason).sentence;
    why.erase(0, why.find(": ") + 2);
  }
  if (element != nullptr) {
    const auto kind = std::ranges::find(element->properties, "Kind", &Property::name);
    if (kind != element->properties.end() && !IsBlank(kind->text))
      why += " (Kind " + OneLine(Trimmed(kind->text), kTextWidth) + ")";
  }
  findings.Add({"dropped", "dropped: " + why, fate.line, fate.id});
}

void ReviewElement(const ElementFate& fate, const PolicyPart* element, Review& review) {
  if (!fate.mark)
    ReviewDropped(fate, element, review.findings);
  else if (fate.isThere)
    ReviewProperties(*element, fate, review);
  else
    review.findings.Add({"nothing",
                         std::string(element == nullptr ? "there is no element of this ID"
                                                        : "its ID cannot be asked for") +
                             "; a watermark is registered from nothing",
                         fate.line, fate.id});
}

void ReviewMissingPolicy(const PolicyDocument& document, Review& review) {
  constexpr std::size_t kMostNames = 8;
  std::vector<std::string> ids;
  for (const PolicyPart& policy : document.policies.All())
    ids.push_back(ids.size() < kMostNames ? OneLine(policy.id, kTextWidth) : "");
  review.emptied = "there is no policy " + std::to_string(review.policyId) +
                   (ids.empty() ? "" : "; its policies: " + NamesInARow(ids, kMostNames));
  review.findings.Add({"policy", review.emptied});
}

/// Reports a second node of the policy, and IDs that it lists again.
void ReviewList(const PolicyPart& policy, Review& review) {
  if (policy.lines.size() > 1)
    review.findings.Add({"policy", "policy " + policy.id + " stands " + OnLines(policy.lines),
                         policy.lines.back()});
  std::map<std::string_view, std::vector<long>> lines;
  std::map<std::string_view, std::size_t> marks;
  for (const Property& listed : policy.listed) lines[listed.text].push_back(listed.line);
  for (const ElementFate& fate : review.elements) marks[fate.id] += fate.mark ? 1 : 0;
  for (const auto& [id, each] : lines)
    if (each.size() > 1 && review.findings.HasRoom("listed"))
      review.findings.Add(
          {"listed",
           "listed " + OnLines(each) + "; it is registered " + Counted(marks[id], "time", "times"),
           each[1], std::string(id)});
}

void ReviewAllElements(const PolicyDocument& document, Remarks& findings) {
  std::set<std::string_view> listed;
  for (const PolicyPart& policy : document.policies.All())
    for (const Property& each : policy.listed) listed.insert(each.text);
  for (const PolicyPart& element : document.elements.All()) {
    if (!listed.contains(element.id))
      findings.Add({"unlisted",
                    element.id.empty() ? "an element without an ID" : "no policy lists it",
                    element.lines.front(), element.id});
    if (element.lines.size() > 1)
      findings.Add({"double", "elements of this ID stand " + OnLines(element.lines),
                    element.lines[1], element.id});
  }
}

void ReviewStrangers(const PolicyDocument& document, Remarks& findings) {
  static const std::set<std::string> kNames = {
      "HLE", "Watermark",    "PolicyInfos", "PolicyInfo", "ElementIDs",
      "ID",  "PrinterScope", "Elements",    "Element",    "@ID"};
  for (const Stranger& stranger : document.strangers) {
    if (!findings.HasRoom("unread")) continue;
    const std::string guess = kNames.contains(stranger.name) ? "" : Guess(stranger.name, kNames);
    findings.Add({"unread",
                  "nobody reads it in " + OneLine(stranger.parent, kTextWidth) +
                      (guess.empty() ? "" : "; is " + guess + " meant?"),
                  stranger.line, "", OneLine(stranger.name, kTextWidth)});
  }
}

void ReviewScope(const PolicyPart& policy, const std::wstring& read, Review& review) {
  const std::vector<Property>& scopes = policy.properties;
  for (std::size_t i = 1; i < scopes.size(); ++i)
    review.findings.Add(
        {"unread", Superseded(scopes[0].line, scopes[i].line), scopes[i].line, "", "PrinterScope"});
  const std::string text = platform::ToUtf8(read);
  const std::optional<double> number = NumberOf(text);
  const int scope = _wtoi(read.c_str());
  // Any other number switches the same entries as 0.
  const int meaning = scope >= 0 && scope <= 3 ? scope : 0;
  const std::string became = std::to_string(meaning);
  if (scopes.empty())
    review.notes.Add({"lacking", "it is not there, which counts as " + became, policy.lines.front(),
                      "", "PrinterScope", "", became});
  else if (number != meaning)
    review.findings.Add({number || meaning != 0 ? "changed" : "zero",
                         (text.empty() ? "it is empty, which" : NumberOrQuoted(text)) +
                             " counts as " + became + ", " + ScopeMeaning(meaning) + "; 0 to 3",
                         scopes[0].line, "", "PrinterScope", text, became});
}

PrinterFate FateOf(const std::string& printer, const peers::SettingFileContent& records) {
  const peers::EntryRecord* const entry = FindEntry(records, printer);
  if (entry == nullptr) return {printer, std::nullopt, false, IsExcluded(records, printer)};
  return {printer, entry->watermarks.size(), entry->lastSetting.enabled};
}

void ReviewEntries(Review& review) {
  if (!review.undelivered.empty()) review.findings.Add({"undelivered", review.undelivered});
  if (std::ranges::all_of(review.records.entries, [](const peers::EntryRecord& entry) {
        return entry.watermarks.empty();
      })) {
    if (review.emptied.empty()) review.emptied = "no element is registered";
    review.findings.Add({"emptied", "no element is registered: every entry is emptied"});
  }
  if (!review.unseen.empty()) review.findings.Add({"unseen", "no watermark can be seen"});
  if (FindEntry(review.records, "*") != nullptr)
    review.printers.push_back(FateOf("*", review.records));
  for (const PrinterState& printer : ListPrinters())
    review.printers.push_back(FateOf(platform::ToUtf8(printer.name), review.records));
}

/// Trouble of the pass that is not the reason of a dropped element is a note about the machine.
void ReviewTroubles(const std::vector<Message>& troubles, Review& review) {
  std::set<std::pair<int, std::string>> reasons;
  for (const ElementFate& fate : review.elements)
    if (fate.reason) reasons.emplace(fate.reason->number, fate.reason->text);
  for (const Message& trouble : troubles)
    if (reasons.contains({trouble.number, trouble.text}))
      review.told.push_back(trouble);
    else
      review.notes.Add({"machine", "on this machine, " + MeaningOf(trouble).sentence});
}

}  // namespace

Review ReviewOf(const PolicyCall& call, const PolicyDocument& document, Rehearsal rehearsal,
                const page::Paper& paper) {
  Review review = {.policyId = call.policyId, .result = rehearsal.result};
  if (rehearsal.result == SIGIL_SETTING_FAILED) {
    review.failure = FirstFailure(rehearsal.messages).sentence;
    return review;
  }
  if (!rehearsal.undelivered.empty())
    review.undelivered =
        "`set` and `release` refuse it as a delivered policy: " + rehearsal.undelivered;
  const PolicyPart* const policy = document.policies.Find(std::to_string(call.policyId));
  const std::vector<Message> troubles = Troubles(rehearsal.messages);
  RequireWhole(policy, rehearsal.messages, troubles);
  if (policy != nullptr) review.elements = FatesOf(document, *policy, rehearsal);
  review.records = std::move(rehearsal.records);
  for (const ElementFate& fate : review.elements)
    if (fate.isFirst) ReviewElement(fate, document.elements.Find(fate.id), review);
  ReviewSight(paper, review);
  if (policy == nullptr)
    ReviewMissingPolicy(document, review);
  else
    ReviewList(*policy, review);
  ReviewAllElements(document, review.findings);
  ReviewStrangers(document, review.findings);
  if (policy != nullptr)
    ReviewScope(*policy, ReadPolicy(call.text, call.policyId).scope.value_or(L""), review);
  ReviewEntries(review);
  ReviewTroubles(troubles, review);
  review.findings.Close();
  review.notes.Close();
  return review;
}

}  // namespace app
