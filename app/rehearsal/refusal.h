#pragma once

// A bad policy never replaces a good one by accident.

#include <string>
#include <vector>

#include "app/pass/pass.h"

namespace app {

/// What a policy is let at.
enum class Use {
  kUpdate,    ///< The machine's records.
  kDelivery,  ///< Every machine that it is delivered to.
};

/// How strictly a policy is let through.
struct Care {
  bool isForced = false;  ///< Also a policy that a rehearsal finds unfit.
  bool isStrict = false;  ///< None with a finding.
};

/// The last sentence of a refusal. The first one is for a text that no pass can read, because a
/// forced update clears the lists before it reads the text.
inline constexpr char kCostOfForce[] =
    "Nothing is changed; --force would clear the exclude list and the printers' own entries.";
inline constexpr char kForceDoes[] = "Nothing is changed; --force does it all the same.";

/// What a rehearsal says of a policy that is let through.
struct Verdict {
  std::vector<std::string> lines;  ///< What is to be told of it, a line each.
  std::vector<Message> told;       ///< The trouble that the lines tell.
  std::string cause;               ///< Why the passes refuse it, where --force lets it through.
  std::size_t elements = 0;        ///< How many its list has; 0 when it was not rehearsed.
};

/// Rehearses the policy. Throws UsageError with the reason when the passes refuse it, when it
/// empties every entry, when no watermark of it can be seen, and by strict care at any finding; and
/// whatever keeps the rehearsal from being held. By force it throws nothing, and the lines tell of
/// it. `file` is how the lines name the text. Nothing of the machine changes.
Verdict RefuseOrTell(const std::wstring& text, const std::string& file, int policyId, Use use,
                     Care care, bool resetName = false);

}  // namespace app
