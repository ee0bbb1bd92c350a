#pragma once

// The state of the machine in words, which reports tell too.

#include "app/text/json.h"
#include "app/text/table.h"

namespace app {

/// Returns one object: `machine`, `good` (every export would do its work), `parts`, `unread` (lines
/// of machine.ini), `scope` (the delivered one; null when there is none), `printers` (null when
/// they cannot be listed) and `forecast`.
Json Diagnose();

/// Returns one of its lists, parts, unread, printers or forecast, as the rows of a table, with
/// headings.
std::vector<Row> RowsOf(const Json& diagnosis, const std::string& list);

}  // namespace app
