#pragma once

// Which watermark of a rehearsal came of which entry of the policy's list.

#include <optional>
#include <string>
#include <vector>

#include "app/rehearsal/fields.h"
#include "app/rehearsal/rehearse.h"

namespace app {

struct Registered {
  /// The watermark in the default entry; nothing when the element was dropped.
  std::optional<peers::WatermarkRecord> mark;
  /// What the pass said when it dropped the element.
  std::optional<Message> reason;
};

/// One for each of the IDs, which are those of the policy's list in its order. The pass tells of
/// each element in that order, and which GUID it got.
std::vector<Registered> Match(const Rehearsal& rehearsal, const std::vector<std::string>& ids);

/// The default entry's record; null when there is none.
const peers::EntryRecord* DefaultEntry(const peers::SettingFileContent& records);

/// The values of the record's fields, the name without the ID that it begins with: what is alike
/// for two elements that differ in their ID alone.
std::vector<FieldValue> ValuesOf(const peers::WatermarkRecord& mark, const std::string& id);

}  // namespace app
