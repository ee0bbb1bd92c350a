#include "app/rehearsal/in_force.h"

#include "app/rehearsal/scratch_machine.h"
#include "app/text/errors.h"
#include "app/text/wording.h"

namespace app {

Force ForceOf(const Review& review) try {
  if (!review.refusal.empty())
    return {.unknown = "the passes refuse the policy: " + review.refusal};
  if (!review.failure.empty()) return {.unknown = "no pass can run here: " + review.failure};
  return {.differences = Compare(ReadSettingsOfCopy(), review.records, review.Ids()),
          .entries = review.records.entries.size(),
          .excluded = review.records.excluded.size()};
} catch (const std::exception& error) {
  return {.unknown = CauseOf(error)};
}

std::string Sentence(const Force& force) {
  if (!force.unknown.empty()) return "cannot be told: " + force.unknown;
  if (force.IsIn())
    return "in force on " + Counted(force.entries, "entry", "entries") + "; " +
           Counted(force.excluded, "printer", "printers") + " excluded";
  return "not in force: " + Counted(force.differences.size(), "difference", "differences");
}

}  // namespace app
