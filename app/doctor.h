#pragma once

#include <iosfwd>

namespace app {

/// One page for an administrator: what an export would meet on this machine, and where it would
/// stop. Changes nothing.
void PrintDiagnosis(std::ostream& out);

}  // namespace app
