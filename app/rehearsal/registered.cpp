#include "app/rehearsal/registered.h"

#include <algorithm>
#include <map>

#include "app/pass/messages.h"

namespace app {
namespace {

bool IsTrouble(const Message& message) {
  return !Troubles({message}).empty();
}

}  // namespace

std::vector<Registered> Match(const Rehearsal& rehearsal, const std::vector<std::string>& ids) {
  std::map<std::string, const peers::WatermarkRecord*> marks;
  if (const auto* entry = DefaultEntry(rehearsal.records))
    for (const peers::WatermarkRecord& mark : entry->watermarks) marks[mark.id] = &mark;

  std::vector<Registered> all;
  auto place = rehearsal.outcome.messages.begin();
  const auto end = rehearsal.outcome.messages.end();
  for (const std::string& id : ids) {
    Registered& registered = all.emplace_back();
    const auto isMade = [](const Message& message) { return MadeMarkIn(message).has_value(); };
    const auto made = std::find_if(place, end, isMade);
    const auto trouble = std::find_if(place, made, IsTrouble);
    const auto mark = made == end ? std::nullopt : MadeMarkIn(*made);
    const bool isOwn = mark && mark->elementId == id && marks.contains(mark->guid);
    if (isOwn) {
      registered.mark = *marks.at(mark->guid);
      place = made + 1;
    } else if (trouble != made) {
      registered.reason = *trouble;
      place = trouble + 1;
    }
  }
  return all;
}

const peers::EntryRecord* DefaultEntry(const peers::SettingFileContent& records) {
  const auto found = std::ranges::find(records.entries, "*", &peers::EntryRecord::printer);
  return found == records.entries.end() ? nullptr : &*found;
}

std::vector<FieldValue> ValuesOf(const peers::WatermarkRecord& mark, const std::string& id) {
  peers::WatermarkRecord record = mark;
  if (record.name.starts_with(id)) record.name.erase(0, id.size());
  std::vector<FieldValue> values;
  for (const Field& field : Fields()) values.push_back(field.get(record));
  return values;
}

}  // namespace app
