// The findings of a rehearsed policy: its document, ID by ID, against the watermarks and the
// messages of the pass.

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include "app/machine/policy_file.h"
#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/rehearsal/review.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "management/printer_scope.h"
#include "platform/crt.h"
#include "platform/utf.h"

namespace app {
namespace {

/// The smallest number that switches the same entries, where the number itself has no meaning.
int KnownScope(const std::wstring& text) {
  constexpr int kKnown[] = {0, 1, 2, 3};
  const int scope = _wtoi(text.c_str());
  if (std::ranges::find(kKnown, scope) != std::end(kKnown)) return scope;
  namespace system = SigilSettingManagement;
  return *std::ranges::find_if(kKnown, [&](int known) {
    return system::IsDefaultEntryInScope(known) == system::IsDefaultEntryInScope(scope) &&
           system::AreSuitePrintersInScope(known) == system::AreSuitePrintersInScope(scope);
  });
}

/// The reader cannot ask for an ID with a quotation mark.
bool HasQuote(const std::string& id) {
  return id.find('"') != id.npos;
}

class Reviewer {
 public:
  Reviewer(const PolicyCall& call, const PolicyDocument& document, Rehearsal& rehearsal,
           Review& review)
      : m_call(call),
        m_document(document),
        m_policy(document.FindPolicy(call.policyId)),
        m_rehearsal(rehearsal),
        m_review(review) {}

  void Run(const page::Paper& paper) {
    RequireWhole();
    MatchElements();
    for (const ElementFate& fate : m_review.elements)
      if (fate.isFirst) ReviewElement(fate, m_document.FindElement(fate.id));
    ReviewSight(paper, m_review);
    ReviewPolicies();
    ReviewList();
    ReviewAllElements();
    ReviewStrangers();
    ReviewScope();
    ReviewEntries();
    ReviewTroubles();
    m_review.findings.Close();
    m_review.notes.Close();
  }

 private:
  void Find(Finding finding) { m_review.findings.Add(std::move(finding)); }

  /// Throws when the pass has failed at something for which the policy is not to blame, as when the
  /// memory ends.
  void RequireWhole() const {
    const bool canBeUnread =
        m_policy != nullptr && std::ranges::any_of(m_policy->listed, HasQuote, &ListedId::id);
    if (m_rehearsal.hasUnread && !canBeUnread)
      throw std::runtime_error("the rehearsal is incomplete: the policy could not be read");
    for (const Message& trouble : m_rehearsal.troubles)
      if (const Meaning meaning = MeaningOf(trouble); meaning.weight == Weight::kFailure)
        throw std::runtime_error("the rehearsal is incomplete: " + meaning.sentence);
  }

  /// Pairs the IDs of the list with what the pass registered. Throws when the counts differ,
  /// because the pairs would be wrong.
  void MatchElements() {
    if (m_policy == nullptr) return;
    const std::vector<ListedId>& list = m_policy->listed;
    if (m_rehearsal.registered.size() != list.size())
      throw std::runtime_error("the rehearsal is incomplete: it tells of " +
                               std::to_string(m_rehearsal.registered.size()) + " of " +
                               std::to_string(list.size()) + " IDs");
    std::set<std::string_view> ids;
    for (std::size_t i = 0; i < list.size(); ++i) {
      const auto& [id, line] = list[i];
      const PolicyElement* const element = m_document.FindElement(id);
      m_review.elements.push_back({std::move(m_rehearsal.registered[i]), id,
                                   element == nullptr ? line : element->lines.front(),
                                   element != nullptr && !HasQuote(id), ids.insert(id).second});
    }
  }

  /// `element` is null where the policy has none of the ID.
  void ReviewElement(const ElementFate& fate, const PolicyElement* element) {
    if (!fate.mark)
      ReviewDropped(fate, element);
    else if (fate.isThere)
      ReviewProperties(*element, fate, m_review);
    else
      Find({"nothing", fate.id, "", fate.line,
            std::string(element == nullptr ? "there is no element of this ID"
                                           : "its ID cannot be asked for") +
                "; a watermark is registered from nothing"});
  }

  void ReviewDropped(const ElementFate& fate, const PolicyElement* element) {
    if (!m_review.findings.HasRoom("dropped")) return;
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
    Find({"dropped", fate.id, "", fate.line, "dropped: " + why});
  }

  void ReviewPolicies() {
    constexpr std::size_t kMostNames = 8;
    if (m_policy != nullptr) {
      if (m_policy->lines.size() > 1)
        Find({"policy", "", "", m_policy->lines.back(),
              "policy " + m_policy->id + " stands " + OnLines(m_policy->lines)});
      return;
    }
    std::vector<std::string> ids;
    for (const PolicyInfo& policy : m_document.policies)
      ids.push_back(ids.size() < kMostNames ? OneLine(policy.id, kTextWidth) : "");
    m_review.emptied = "there is no policy " + std::to_string(m_call.policyId) +
                       (ids.empty() ? "" : "; its policies: " + NamesInARow(ids, kMostNames));
    Find({"policy", "", "", 0, m_review.emptied});
  }

  /// IDs that the policy lists again.
  void ReviewList() {
    if (m_policy == nullptr) return;
    std::map<std::string_view, std::vector<long>> lines;
    std::map<std::string_view, std::size_t> marks;
    for (const ListedId& listed : m_policy->listed) lines[listed.id].push_back(listed.line);
    for (const ElementFate& fate : m_review.elements) marks[fate.id] += fate.mark ? 1 : 0;
    for (const auto& [id, each] : lines)
      if (each.size() > 1 && m_review.findings.HasRoom("listed"))
        Find({"listed", std::string(id), "", each[1],
              "listed " + OnLines(each) + "; it is registered " +
                  Counted(marks[id], "time", "times")});
  }

  void ReviewAllElements() {
    std::set<std::string_view> listed;
    for (const PolicyInfo& policy : m_document.policies)
      for (const ListedId& each : policy.listed) listed.insert(each.id);
    for (const PolicyElement& element : m_document.elements) {
      if (!listed.contains(element.id))
        Find({"unlisted", element.id, "", element.lines.front(),
              element.id.empty() ? "an element without an ID" : "no policy lists it"});
      if (element.lines.size() > 1)
        Find({"double", element.id, "", element.lines[1],
              "elements of this ID stand " + OnLines(element.lines)});
    }
  }

  void ReviewStrangers() {
    static const std::set<std::string> kNames = {
        "HLE", "Watermark",    "PolicyInfos", "PolicyInfo", "ElementIDs",
        "ID",  "PrinterScope", "Elements",    "Element",    "@ID"};
    for (const Stranger& stranger : m_document.strangers) {
      if (!m_review.findings.HasRoom("unread")) continue;
      const std::string guess = kNames.contains(stranger.name) ? "" : Guess(stranger.name, kNames);
      Find({"unread", "", OneLine(stranger.name, kTextWidth), stranger.line,
            "nobody reads it in " + OneLine(stranger.parent, kTextWidth) +
                (guess.empty() ? "" : "; is " + guess + " meant?")});
    }
  }

  void ReviewScope() {
    if (m_policy == nullptr) return;
    const std::vector<Property>& scopes = m_policy->scopes;
    for (std::size_t i = 1; i < scopes.size(); ++i)
      Find({"unread", "", "PrinterScope", scopes[i].line,
            Superseded(scopes[0].line, scopes[i].line)});
    const std::wstring read = ReadPolicy(m_call.text, m_call.policyId).scope.value_or(L"");
    const std::string text = platform::ToUtf8(read);
    const std::optional<double> number = NumberOf(text);
    const int meaning = KnownScope(read);
    const std::string became = std::to_string(meaning);
    if (scopes.empty())
      m_review.notes.Add({"lacking", "", "PrinterScope", m_policy->lines.front(),
                          "it is not there, which counts as " + became, "", became});
    else if (number != meaning)
      Find({number || meaning != 0 ? "changed" : "zero", "", "PrinterScope", scopes[0].line,
            (text.empty() ? "it is empty, which" : NumberOrQuoted(text)) + " counts as " + became +
                ", " + ScopeMeaning(meaning) + "; 0 to 3",
            text, became});
  }

  void ReviewEntries() {
    if (!m_review.undelivered.empty()) Find({"undelivered", "", "", 0, m_review.undelivered});
    const std::vector<peers::EntryRecord>& entries = m_review.records.entries;
    const auto isEmpty = [](const peers::EntryRecord& entry) { return entry.watermarks.empty(); };
    if (std::ranges::all_of(entries, isEmpty)) {
      if (m_review.emptied.empty()) m_review.emptied = "no element is registered";
      Find({"emptied", "", "", 0, "no element is registered: every entry is emptied"});
    }
    if (!m_review.unseen.empty()) Find({"unseen", "", "", 0, "no watermark can be seen"});
    if (FindEntry(m_review.records, "*") != nullptr) m_review.printers.push_back(FateOf("*"));
    for (const PrinterState& printer : ListPrinters())
      m_review.printers.push_back(FateOf(platform::ToUtf8(printer.name)));
  }

  /// Trouble of the pass that is not the reason of a dropped element is a note about the machine.
  void ReviewTroubles() {
    std::set<std::pair<int, std::string>> reasons;
    for (const ElementFate& fate : m_review.elements)
      if (fate.reason) reasons.emplace(fate.reason->number, fate.reason->text);
    for (const Message& trouble : m_rehearsal.troubles)
      if (reasons.contains({trouble.number, trouble.text}))
        m_review.told.push_back(trouble);
      else
        m_review.notes.Add(
            {"machine", "", "", 0, "on this machine, " + MeaningOf(trouble).sentence});
  }

  PrinterFate FateOf(const std::string& printer) const {
    const peers::EntryRecord* const entry = FindEntry(m_review.records, printer);
    if (entry == nullptr)
      return {printer, std::nullopt, false, IsExcluded(m_review.records, printer)};
    return {printer, entry->watermarks.size(), entry->lastSetting.enabled};
  }

  const PolicyCall& m_call;
  const PolicyDocument& m_document;
  const PolicyInfo* const m_policy;
  Rehearsal& m_rehearsal;
  Review& m_review;
};

}  // namespace

void FindFaults(const PolicyCall& call, const PolicyDocument& document, Rehearsal rehearsal,
                const page::Paper& paper, Review& review) {
  Reviewer(call, document, rehearsal, review).Run(paper);
}

}  // namespace app
