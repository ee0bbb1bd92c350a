#include <algorithm>

#include "app/commands/command_line.h"
#include "app/machine/settings.h"
#include "app/machine/state.h"
#include "app/pass/messages.h"
#include "app/pass/pass.h"
#include "app/text/files.h"
#include "app/text/wording.h"

namespace app {
namespace {

/// Returns whether an old ID is still there. An update replaces every watermark, so such an ID
/// shows that nothing was saved. New IDs prove nothing, because another process may have saved
/// them.
bool IsUntouched(const std::set<std::string>& before, const std::set<std::string>& after) {
  return after.empty() ||
         std::ranges::any_of(after, [&](const std::string& id) { return before.contains(id); });
}

std::string Numbers(const WorkDone& done, std::size_t elements) {
  if (done.entries == 0) return "";
  const std::string on = " on " + Counted(done.entries, "entry", "entries") + ".";
  const std::size_t each = done.marks / done.entries;
  if (done.marks % done.entries != 0) return Counted(done.marks, "watermark", "watermarks") + on;
  if (elements == 0) return Counted(each, "element", "elements") + on;
  return std::to_string(each) + " of " + Counted(elements, "element", "elements") + on;
}

struct Options {
  std::string file;
  int policyId = 1;
  bool resetName = false;
  Care care;
  bool isVerbose = false;
};

/// Rehearses the policy and applies it. Returns 1 when it is not applied or not saved. Throws
/// UsageError for a policy that is refused.
int Update(const Options& options) {
  const std::wstring text = ReadTextFile(options.file);
  const PolicyCall call = {text, options.policyId, options.resetName};
  const Verdict verdict = RefuseOrTell(call, NameOf(options.file), Use::kUpdate, options.care);
  LayUserFile();
  const auto before = WatermarkIds();
  const Outcome outcome = Call(UpdateCall(call));
  const WorkDone done = WorkDoneIn(outcome);
  Work work{.command = "update",
            .done = "The policy is applied.",
            .numbers = Numbers(done, verdict.elements),
            .lines = verdict.cause.empty() ? verdict.lines : std::vector<std::string>(),
            .cause = verdict.cause,
            .told = verdict.told,
            .isVerbose = options.isVerbose};
  if (options.policyId != 1)
    work.lines.push_back("set goes by policy 1 of the delivered text, not by " +
                         std::to_string(options.policyId) + ".");
  if (std::string unread = WhatIsUnread(); !unread.empty()) work.lines.push_back(std::move(unread));
  const auto after = done.marks > 0 ? WatermarkIds() : std::nullopt;
  if (before && after && IsUntouched(*before, *after)) work.unsaved = WhyUnsaved();
  return Report(outcome, work);
}

}  // namespace

void AddUpdate(CommandLine& line) {
  auto [command, options] =
      line.Add("update", "Applies a policy to the default entry and printers", Update);
  AddPolicyFile(command, options.file);
  AddPolicyId(command, options.policyId);
  command.add_flag("--reset-name", options.resetName, "Looks the user's full name up anew");
  AddCare(command, options.care);
  AddVerbose(command, options.isVerbose);
}

}  // namespace app
