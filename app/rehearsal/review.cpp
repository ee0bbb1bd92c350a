#include "app/rehearsal/review.h"

#include <algorithm>
#include <set>

#include "app/machine/policy_text.h"
#include "app/machine/sample.h"
#include "app/pass/messages.h"
#include "app/pass/result.h"
#include "app/rehearsal/document.h"
#include "app/rehearsal/property_review.h"
#include "app/rehearsal/registered.h"
#include "app/rehearsal/scope.h"
#include "app/rehearsal/trial.h"
#include "app/text/errors.h"
#include "app/text/input.h"
#include "app/text/table.h"
#include "app/text/wording.h"
#include "platform/posix/machine/machine.h"
#include "platform/utf.h"

namespace app {
namespace {

/// The names that an author may write: those of the sample and of the records. They are only tried.
std::set<std::string> KnownNames() {
  std::set<std::string> names;
  const PolicyDocument sample(sample::kPolicy);
  for (const PolicyElementNodes& element : sample.Elements())
    for (const Property& property : element.properties) names.insert(property.name);
  for (const Field& field : Fields()) {
    std::string name = field.name;
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    names.insert(name);
  }
  return names;
}

class Reviewer {
 public:
  Reviewer(const std::wstring& text, int policyId, Review& review)
      : m_text(text),
        m_document(platform::ToUtf8(text)),
        m_policy(m_document.FindPolicy(policyId)),
        m_review(review) {}

  void Run() {
    MatchElements();
    const Trial trial(TriedElements(), KnownNames());
    ReviewElements(trial);
    ReviewList();
    ReviewStrangers();
    ReviewScope();
    if (const std::string why = WhyNotDelivered(m_text); !why.empty())
      Find({"undelivered", "", "", 0,
            "`set` and `release` refuse it as a delivered policy: " + why});
    ReviewEntries();
    const auto byLine = [](const Finding& left, const Finding& right) {
      return left.line < right.line;
    };
    std::ranges::stable_sort(m_review.remarks.findings, byLine);
    std::ranges::stable_sort(m_review.remarks.notes, byLine);
  }

 private:
  void Find(Finding finding) { m_review.remarks.findings.push_back(std::move(finding)); }
  void Note(Finding finding) { m_review.remarks.notes.push_back(std::move(finding)); }

  void MatchElements() {
    if (m_policy == nullptr) return;
    std::vector<std::string> ids;
    for (const ListedElement& listed : m_policy->listed) ids.push_back(listed.id);
    m_registered = Match({m_review.outcome, m_review.records}, ids);
    for (std::size_t i = 0; i < ids.size(); ++i) {
      const PolicyElementNodes* const element = m_document.Find(ids[i]);
      const long line = element == nullptr ? m_policy->listed[i].line : element->Line();
      m_review.elements.push_back({ids[i], line, m_registered[i].mark});
    }
  }

  /// Each once, although it may be listed again.
  std::vector<const PolicyElementNodes*> TriedElements() const {
    std::vector<const PolicyElementNodes*> elements;
    std::set<std::string> seen;
    for (const ElementFate& fate : m_review.elements)
      if (const auto* element = m_document.Find(fate.id); element && seen.insert(fate.id).second)
        elements.push_back(element);
    return elements;
  }

  void ReviewElements(const Trial& trial) {
    std::set<std::string> seen;
    for (std::size_t i = 0; i < m_registered.size(); ++i) {
      const ElementFate& fate = m_review.elements[i];
      if (!seen.insert(fate.id).second) continue;
      const PolicyElementNodes* const element = m_document.Find(fate.id);
      if (fate.mark)
        ReviewMark(fate, *fate.mark, element, trial);
      else
        ReviewDropped(fate, m_registered[i], element);
    }
    if (!trial.IsWhole())
      Note({"untried", "", "", 0, "the policy is too large for every property to be tried"});
  }

  void ReviewDropped(const ElementFate& fate, const Registered& registered,
                     const PolicyElementNodes* element) {
    std::string why = "the pass does not say why";
    if (registered.reason) {
      why = MeaningOf(*registered.reason).sentence;
      why.erase(0, why.find(": ") + 2);
    }
    const std::string kind = element == nullptr ? "" : element->TextOf("Kind");
    if (!kind.empty()) why += " (Kind " + OneLine(kind, kTextWidth) + ")";
    Find({"dropped", fate.id, "", fate.line, "dropped: " + why});
  }

  void ReviewMark(const ElementFate& fate, const peers::WatermarkRecord& mark,
                  const PolicyElementNodes* element, const Trial& trial) {
    const std::vector<FieldValue> values = ValuesOf(mark, fate.id);
    const bool isFromNothing =
        element == nullptr || (trial.FateOfNothing() == values && trial.FateOf(*element) != values);
    if (isFromNothing)
      return Find({"nothing", fate.id, "", fate.line,
                   std::string(element == nullptr ? "there is no element of this ID"
                                                  : "its ID cannot be asked for") +
                       "; a watermark is registered from nothing"});
    PropertyReview(trial, m_review.remarks).Run(*element, values);
    if (mark.opacity == 0)
      Find({"invisible", fate.id, "", fate.line, "invisible: its opacity is 0"});
    if (IsBlank(mark.text))
      Find({"invisible", fate.id, "", fate.line, "invisible: its text is empty"});
  }

  /// What is wrong with the policy's list, and with the elements as a whole.
  void ReviewList() {
    if (m_policy == nullptr) {
      std::string ids;
      for (const PolicyNodes& policy : m_document.Policies())
        ids += (ids.empty() ? "" : ", ") + OneLine(policy.id, kTextWidth);
      Find({"policy", "", "", 0,
            "there is no policy " + std::to_string(m_review.policyId) +
                (ids.empty() ? "" : "; its policies: " + OneLine(ids, 2 * kTextWidth))});
    } else if (m_policy->lines.size() > 1) {
      Find({"policy", "", "", m_policy->lines.back(),
            "policy " + m_policy->id + " stands on the lines " + Listed(m_policy->lines)});
    }
    ReviewDoubles();
    std::set<std::string> listed;
    for (const PolicyNodes& policy : m_document.Policies())
      for (const ListedElement& each : policy.listed) listed.insert(each.id);
    for (const PolicyElementNodes& element : m_document.Elements()) {
      if (!listed.contains(element.id))
        Find({"unlisted", element.id, "", element.Line(), "no policy lists it"});
      if (element.nodes.size() < 2) continue;
      std::vector<long> lines;
      for (const xmlNode* const node : element.nodes) lines.push_back(xmlGetLineNo(node));
      Find({"double", element.id, "", lines[1],
            "elements of this ID stand on the lines " + Listed(lines)});
    }
  }

  void ReviewDoubles() {
    if (m_policy == nullptr) return;
    std::map<std::string, std::vector<long>> lines;
    for (const ListedElement& listed : m_policy->listed) lines[listed.id].push_back(listed.line);
    for (const auto& [id, each] : lines)
      if (each.size() > 1) {
        const auto count = std::ranges::count_if(m_review.elements, [&](const ElementFate& fate) {
          return fate.id == id && fate.mark.has_value();
        });
        Find({"listed", id, "", each[1],
              "listed on the lines " + Listed(each) + "; it is registered " +
                  Counted(static_cast<std::size_t>(count), "time", "times")});
      }
  }

  /// Told when the records are the same without them.
  void ReviewStrangers() {
    if (m_document.Strangers().empty()) return;
    ScratchMachine machine;
    machine.CopyMachine();
    const Rehearsal without = Rehearse(
        machine,
        UpdateCall(platform::FromUtf8(m_document.TextWithoutStrangers()), m_review.policyId));
    if (!SameRecords(without.records, m_review.records)) return;
    const std::set<std::string> names = {"HLE",        "Watermark", "PolicyInfos",  "PolicyInfo",
                                         "ElementIDs", "ID",        "PrinterScope", "Elements",
                                         "Element",    "@ID"};
    for (const Stranger& stranger : m_document.Strangers()) {
      const std::string guess = names.contains(stranger.name) ? "" : Guess(stranger.name, names);
      Find({"unread", "", OneLine(stranger.name, kTextWidth), stranger.line,
            "nobody reads it in " + OneLine(stranger.parent, kTextWidth) +
                (guess.empty() ? "" : "; is " + guess + " meant?")});
    }
  }

  static bool SameRecords(const peers::SettingFileContent& left,
                          const peers::SettingFileContent& right) {
    if (left.entries.size() != right.entries.size()) return false;
    for (std::size_t i = 0; i < left.entries.size(); ++i) {
      const peers::EntryRecord& one = left.entries[i];
      const peers::EntryRecord& two = right.entries[i];
      if (one.lastSetting.enabled != two.lastSetting.enabled ||
          !std::ranges::equal(
              one.watermarks, two.watermarks, {},
              [](const auto& mark) { return ValuesOf(mark, ""); },
              [](const auto& mark) { return ValuesOf(mark, ""); }))
        return false;
    }
    return true;
  }

  void ReviewScope() {
    if (m_policy == nullptr) return;
    for (std::size_t i = 1; i < m_policy->scopes.size(); ++i)
      Find({"unread", "", "PrinterScope", m_policy->scopes[i].line,
            "nobody reads it: the one of line " + std::to_string(m_policy->scopes[0].line) +
                " counts"});
    const std::string text = m_policy->scopes.empty() ? "" : Trimmed(m_policy->scopes[0].text);
    const long line = m_policy->scopes.empty() ? m_policy->lines.front() : m_policy->scopes[0].line;
    const std::optional<int> meaning = ScopeMeaning(text);
    const std::optional<double> number = NumberOf(text);
    const std::string became = meaning ? std::to_string(*meaning) : "something else";
    if (m_policy->scopes.empty())
      Note({"lacking", "", "PrinterScope", line, "it is not there, which counts as " + became, "",
            became});
    else if (!number || !meaning || *number != *meaning)
      Find({number ? "changed" : "zero", "", "PrinterScope", line,
            (text.empty() ? "it is empty, which" : NumberOrQuoted(text)) + " counts as " + became,
            text, became});
  }

  void ReviewEntries() {
    m_review.isEmptied = std::ranges::all_of(
        m_review.records.entries,
        [](const peers::EntryRecord& entry) { return entry.watermarks.empty(); });
    if (m_review.isEmptied)
      Find({"emptied", "", "", 0, "no element is registered: every entry is emptied"});
    if (const auto* entry = DefaultEntry(m_review.records))
      m_review.printers.push_back({"*", FateOf(*entry)});
    for (const platform::Printer& printer : platform::LoadMachine().printers) {
      const std::string name = platform::ToUtf8(printer.name);
      m_review.printers.push_back({name, FateOf(name)});
    }
    for (const Message& message : Troubles(m_review.outcome.messages)) {
      if (std::ranges::find(m_registered, message, &Registered::reason) != m_registered.end())
        m_review.told.push_back(message);
      else
        Note({"machine", "", "", 0, "on this machine, " + MeaningOf(message).sentence});
    }
  }

  static std::string FateOf(const peers::EntryRecord& entry) {
    return Counted(entry.watermarks.size(), "watermark", "watermarks") + ", switched " +
           (entry.lastSetting.enabled ? "on" : "off");
  }

  std::string FateOf(const std::string& printer) const {
    const auto entry =
        std::ranges::find(m_review.records.entries, printer, &peers::EntryRecord::printer);
    if (entry != m_review.records.entries.end()) return FateOf(*entry);
    const auto& excluded = m_review.records.excluded;
    return std::ranges::find(excluded, printer, &peers::ExcludeRecord::name) != excluded.end()
               ? "on the exclude list"
               : "goes by the default entry";
  }

  const std::wstring& m_text;
  PolicyDocument m_document;
  const PolicyNodes* m_policy;
  Review& m_review;
  std::vector<Registered> m_registered;
};

}  // namespace

std::size_t Review::Registered() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      elements, [](const ElementFate& fate) { return fate.mark.has_value(); }));
}

Review ReviewPolicy(const std::wstring& text, int policyId, bool resetName) {
  Review review;
  review.policyId = policyId;
  review.refusal = ReadPolicy(text).refusal;
  {
    ScratchMachine machine;
    machine.CopyMachine();
    Rehearsal rehearsal = Rehearse(machine, UpdateCall(text, policyId, resetName));
    review.outcome = std::move(rehearsal.outcome);
    review.records = std::move(rehearsal.records);
  }
  if (review.outcome.result == SIGIL_SETTING_FAILED) {
    if (review.refusal.empty()) review.failure = FirstFailure(review.outcome.messages).sentence;
    return review;
  }
  review.refusal.clear();
  Reviewer(text, policyId, review).Run();
  return review;
}

Review ReviewFile(const std::string& file, int policyId) {
  Review review = ReviewPolicy(ReadTextFile(file), policyId);
  if (!review.refusal.empty()) throw UsageError(NameOf(file) + ": " + review.refusal);
  if (!review.failure.empty())
    throw UsageError(NameOf(file) + ": cannot be tried on this machine: " + review.failure);
  return review;
}

peers::SettingFileContent RehearsedRecords(const std::string& file, int policyId) {
  Review review = ReviewFile(file, policyId);
  if (review.isEmptied) throw UsageError(NameOf(file) + ": " + WhyEmptied(review));
  return std::move(review.records);
}

std::string WhyEmptied(const Review& review) {
  for (const Finding& finding : review.remarks.findings)
    if (finding.kind == "policy" && finding.line == 0) return finding.message;
  return "no element is registered";
}

std::string Line(const std::string& file, const Finding& finding) {
  std::string line = file + ":";
  if (finding.line > 0) line += std::to_string(finding.line) + ":";
  const std::string element = OneLine(finding.element, kTextWidth);
  if (!element.empty()) line += " " + element;
  if (!finding.property.empty()) line += " " + OneLine(finding.property, kTextWidth);
  if (!element.empty() || !finding.property.empty()) line += ":";
  return line + " " + finding.message;
}

}  // namespace app
