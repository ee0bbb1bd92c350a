#pragma once

// What a policy becomes on this machine, as a rehearsal shows it, held against what its text says.
//
// Every finding is a difference that was seen: between the text and the records, between the fates
// of two texts, or in what the pass said. So none can differ from what the library does.

#include <optional>
#include <string>
#include <vector>

#include "app/pass/library.h"
#include "app/rehearsal/fields.h"
#include "app/rehearsal/finding.h"
#include "peers/settings_component/setting_file.h"

namespace app {

/// What became of an entry of the policy's list.
struct ElementFate {
  std::string id;
  long line = 0;  ///< Of the element, or of the list's entry when there is no element.
  std::optional<peers::WatermarkRecord> mark;  ///< Nothing when it was dropped.
};

struct PrinterFate {
  std::string printer;
  std::string fate;
};

struct Review {
  int policyId = 0;
  Outcome outcome;
  peers::SettingFileContent records;
  std::vector<ElementFate> elements;
  std::vector<PrinterFate> printers;  ///< The default entry first, as "*".
  Remarks remarks;                    ///< By line.
  std::vector<Message> told;          ///< The trouble in the outcome that the remarks tell.

  /// Why the passes refuse the text; then there is nothing else.
  std::string refusal;
  /// Why the pass fails on this machine, whatever the text; then there is nothing else either.
  std::string failure;
  bool isEmptied = false;  ///< Every entry is left without watermarks.

  /// How many of the elements have become watermarks.
  std::size_t Registered() const;
};

/// Throws what keeps a rehearsal from being held.
Review ReviewPolicy(const std::wstring& text, int policyId, bool resetName = false);

/// The same of the policy in a file. UsageError, with the file's name, for one that is refused.
Review ReviewFile(const std::string& file, int policyId);

/// The reason for isEmptied.
std::string WhyEmptied(const Review& review);

/// What the setting file would hold after the policy of the file. UsageError for one that is
/// refused or empties every entry.
peers::SettingFileContent RehearsedRecords(const std::string& file, int policyId);

}  // namespace app
