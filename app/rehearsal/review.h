#pragma once

// What a policy becomes on this machine, as a rehearsal shows it, compared with its text.
//
// Every finding is a difference that was seen, between the text and the records or in the messages
// of the pass, or one that the picture of the page shows. The review works no value out.

#include <set>

#include "app/machine/policy_file.h"
#include "app/page/page.h"
#include "app/rehearsal/document.h"
#include "app/rehearsal/rehearse.h"

namespace app {

struct Finding {
  std::string kind;  ///< One word for programs: "changed", "zero", "unread", ...
  std::string message;
  long line = 0;              ///< 0 when it is about no line.
  std::string element = "";   ///< Its ID; empty when the finding is about no element.
  std::string property = "";  ///< Empty when it is about no property.
  std::string written = "";   ///< Of a value: the text of the policy.
  std::string became = "";    ///< Of a value: the record's, for people.
};

/// "E1 FontSize: -3 became 1", with no name longer than `width` places.
std::string Remark(const Finding& finding, std::size_t width = std::string::npos);

/// "policy.xml:24: E1 FontSize: -3 became 1", on one line whatever the texts in it.
std::string Line(const std::string& file, const Finding& finding);

/// Findings, or notes. Of each kind the first ones are kept and the others counted, because a text
/// may hold a million.
class Remarks {
 public:
  void Add(Finding finding);
  /// Returns whether one more of the kind would be kept; if not, counts it. Spares the caller a
  /// message that nobody would see.
  bool HasRoom(const std::string& kind);
  /// Sorts them by line, and adds one of each kind that says how many were not kept.
  void Close();

  const std::vector<Finding>& Kept() const { return m_kept; }
  /// How many there are in all.
  std::size_t Count() const { return m_count; }

 private:
  std::vector<Finding> m_kept;
  std::map<std::string, std::size_t> m_counts;  ///< By kind.
  std::size_t m_count = 0;
};

/// An ID of the policy's list, and the watermark that it became in the default entry.
struct ElementFate {
  std::string id;
  long line = 0;         ///< Of the element, or of the list's entry when there is no element.
  bool isThere = false;  ///< There is an element that the ID can be asked for.
  bool isFirst = false;  ///< The list does not have the ID before.
  std::optional<peers::WatermarkRecord> mark = {};  ///< Nothing when the element was dropped.
  std::optional<Message> reason = {};               ///< The message that says why it was dropped.
  bool isStamp = false;
};

struct PrinterFate {
  std::string printer;
  std::optional<std::size_t> watermarks;  ///< Of its entry; nothing where it has none.
  bool isOn = false;                      ///< Its entry.
  bool isExcluded = false;                ///< If neither, it goes by the default entry.
};

struct Review {
  int policyId = 0;
  int result = 0;  ///< Of the update.
  /// Why the passes refuse the text; then there is nothing else.
  std::string refusal = {};
  /// Why the pass fails on this machine, whatever the text; then there is nothing else either.
  std::string failure = {};
  /// Why every entry is left without watermarks; empty where one is not.
  std::string emptied = {};
  /// Why no watermark can be seen although some are registered; empty where one can.
  std::string unseen = {};
  /// Why set and release refuse the text as the delivered policy; empty when they do not.
  std::string undelivered = {};

  peers::SettingFileContent records = {};
  std::vector<ElementFate> elements = {};
  std::vector<PrinterFate> printers = {};  ///< The default entry first, as "*".
  Remarks findings = {};                   ///< Faults.
  Remarks notes = {};                      ///< No faults, and good to know.
  std::vector<Message> told = {};          ///< The messages of trouble that the findings name.

  /// How many of the elements have become watermarks.
  std::size_t Registered() const;
  /// The IDs of its elements.
  std::set<std::string> Ids() const;
};

/// The paper that the page is laid out on where none is named.
inline const page::Paper kUsualPaper = page::FindPaper("A4", false);

/// Rehearses the call. Throws UsageError for a text that is too large for that, and whatever keeps
/// the rehearsal from being held or makes it incomplete.
Review ReviewPolicy(const PolicyCall& call, const page::Paper& paper = kUsualPaper);

/// Reviews a rehearsal that has been held. `document` is the text of the call. Throws
/// std::runtime_error for a rehearsal that is incomplete.
Review ReviewOf(const PolicyCall& call, const PolicyDocument& document, Rehearsal rehearsal,
                const page::Paper& paper = kUsualPaper);

/// Reviews the policy. Throws UsageError, with the source's name, for one that is refused.
Review ReviewSource(const PolicySource& source, int policyId,
                    const page::Paper& paper = kUsualPaper);

// A bad policy never replaces a good one by accident.

/// What a policy is meant for.
enum class Use {
  kUpdate,    ///< The machine's records.
  kDelivery,  ///< Every machine that it is delivered to.
};

/// Which policies are refused.
struct Care {
  bool isForced = false;  ///< None, also if a rehearsal finds it unfit.
  bool isStrict = false;  ///< Each with a finding.
};

/// What a rehearsal says of a policy that is let through.
struct Verdict {
  std::vector<std::string> lines = {};  ///< What is to be told of it, a line each.
  std::vector<Message> told = {};       ///< The trouble that the lines tell.
  std::string cause = {};    ///< Why the passes refuse it, where --force lets it through.
  std::size_t elements = 0;  ///< How many its list has; 0 when it was not rehearsed.
};

/// Rehearses the policy. Throws UsageError with the reason when the passes refuse it, when it
/// empties every entry, when no watermark of it can be seen, and by strict care at any finding; and
/// whatever keeps the rehearsal from being held. By force it throws for a text that is too large
/// alone, and the lines tell of the rest. `file` is how the lines name the text. Nothing of the
/// machine changes.
Verdict RefuseOrTell(const PolicyCall& call, const std::string& file, Use use, Care care);

// The parts of a review.

/// Compares each property of the element, which is registered, with the record, and adds each
/// difference to the findings, and to the notes the properties that the element lacks.
void ReviewProperties(const PolicyPart& element, const ElementFate& fate, Review& review);

/// Adds the elements that nobody sees, that lie off the paper, run off it, or lie in one place with
/// another to the findings, and what else the picture shows to the notes. Each element counts once,
/// because an update registers the same on every entry.
void ReviewSight(const page::Paper& paper, Review& review);

/// Returns how many times the text has {WinUser}, which an update fills in.
std::size_t CountUsers(const std::string& text);

}  // namespace app
