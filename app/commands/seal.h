#pragma once

// Sealed policies: made for delivery, and opened again.

#include <string>

namespace app {

/// Makes a policy file of the policy text in `file`, under the machine's key, and tells so: at the
/// path `output`, and where that is empty WmPolicy.dat in the machine's delivery folder. UsageError
/// when the text or the key will not do, and unless `isForced` for a policy that a rehearsal finds
/// unfit; `policyId` is the one that will be applied.
void SealPolicy(const std::string& file, const std::string& output, int policyId, bool isForced);

}  // namespace app
