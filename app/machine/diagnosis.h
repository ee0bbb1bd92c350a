#pragma once

// The state of the machine in words, for the doctor's page and for reports.

#include "app/text/json.h"

namespace app {

/// Returns one object: `machine`, `good` (every export would do its work), `parts`, `unread` (lines
/// of machine.ini), `scope` (the delivered one; null when there is none), `printers` (null when
/// they cannot be listed) and `forecast`.
Json Diagnose();

}  // namespace app
