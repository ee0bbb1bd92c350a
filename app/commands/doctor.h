#pragma once

#include <iosfwd>

#include "app/machine/diagnosis.h"

namespace app {

/// One page for an administrator: what an export would meet on this machine, and where it would
/// stop. Long lists are cut, and it is told how long they are.
void PrintDiagnosis(std::ostream& out, const Diagnosis& diagnosis);

/// All of it, as one JSON object: `machine`, `good`, `parts`, `unread` (lines of machine.ini),
/// `policy` (null when none is readable; else `scope`, `policies` and `elements`), `printers` (null
/// when they cannot be listed) and `forecast`.
void PrintDiagnosisJson(std::ostream& out, const Diagnosis& diagnosis);

}  // namespace app
