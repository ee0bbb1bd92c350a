#pragma once

// What a policy becomes on this machine, as a rehearsal shows it, compared with its text.
//
// Every finding is a difference that was seen, between the text and the records or in the messages
// of the pass, or one that the picture of the page tells. The review works no value out.

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/machine/policy_file.h"
#include "app/page/page.h"
#include "app/rehearsal/document.h"
#include "app/rehearsal/rehearse.h"
#include "app/rehearsal/remarks.h"
#include "peers/settings_component/setting_file.h"

namespace app {

/// An ID of the policy's list.
struct ElementFate {
  std::string id;
  long line = 0;         ///< Of the element, or of the list's entry when there is no element.
  bool isThere = false;  ///< There is an element that the ID can be asked for.
  std::optional<peers::WatermarkRecord> mark;  ///< Nothing when it was dropped.
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
  peers::SettingFileContent records;
  std::vector<ElementFate> elements;
  std::vector<PrinterFate> printers;  ///< The default entry first, as "*".
  Remarks findings;                   ///< Faults.
  Remarks notes;                      ///< No faults, and good to know.
  std::vector<Message> told;          ///< The messages of trouble that the findings tell.

  /// Why the passes refuse the text; then there is nothing else.
  std::string refusal;
  /// Why the pass fails on this machine, whatever the text; then there is nothing else either.
  std::string failure;
  /// Why every entry is left without watermarks; empty where one is not.
  std::string emptied;
  /// Why no watermark can be seen although some are registered; empty where one can.
  std::string unseen;
  /// Why set and release refuse the text as the delivered policy; empty when they do not.
  std::string undelivered;

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

/// Reviews a rehearsal that has been held. `document` is the text of the call.
Review ReviewOf(const PolicyCall& call, const PolicyDocument& document, Rehearsal rehearsal,
                const page::Paper& paper = kUsualPaper);

/// Reviews the policy. Throws UsageError, with the source's name, for one that is refused.
Review ReviewSource(const PolicySource& source, int policyId,
                    const page::Paper& paper = kUsualPaper);

}  // namespace app
