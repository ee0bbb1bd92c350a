#include "app/switches.h"

#include "app/inventory/findings.h"
#include "app/result.h"
#include "app/told.h"

namespace app {
namespace {

int Switch(const char* command, const char* done, const ExportCall& call) {
  const Outcome outcome = Call(call);
  const WorkDone did = WorkDoneIn(outcome);
  Work work{
      .command = command,
      .done = done,
      .numbers = Counted(did.on, "entry", "entries") + " on, " + std::to_string(did.off) + " off."};
  if (did.hasFailedDelivery) work.cause = "the policy file: " + Examine().policyFile;
  return Report(outcome, work);
}

}  // namespace

int Set() {
  return Switch("set", "The watermarks are on where the scope wants them.",
                [](const Exports& exports) { return exports.set(); });
}

int Release() {
  return Switch("release", "The watermarks are off and the control service knows.",
                [](const Exports& exports) { return exports.release(); });
}

int ReleaseForService() {
  return Switch("release-for-service", "The watermarks are off and deleted.",
                [](const Exports& exports) { return exports.releaseForService(); });
}

int Exclude() {
  const Outcome outcome = Call([](const Exports& exports) { return exports.updateExclude(); });
  const WorkDone did = WorkDoneIn(outcome);
  return Report(outcome, {.command = "exclude",
                          .done = "The exclude list is rebuilt.",
                          .numbers = std::to_string(did.excluded) + " of " +
                                     Counted(did.checked, "printer", "printers") + " on it."});
}

int SwitchContentLog(bool on) {
  const Outcome outcome =
      Call([on](const Exports& exports) { return exports.setUseContentLog(on); });
  return Report(outcome, {.command = "content-log",
                          .done = on ? "The content log is on." : "The content log is off."});
}

}  // namespace app
