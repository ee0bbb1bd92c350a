#pragma once

// The properties of an element, and what became of each in the watermark's record.
//
// One table says which property fills which field, of which kind, in which form and range. The
// values come from the record alone.

#include <string>
#include <vector>

#include "app/rehearsal/document.h"
#include "app/rehearsal/rehearse.h"
#include "app/rehearsal/remarks.h"

namespace app {

/// The property that decides on the kind.
inline constexpr char kKind[] = "Kind";

/// Compares each property of the element, which is registered, with the record, and adds each
/// difference to `findings`, and to `notes` what the element lacks. `fullNames` are those that the
/// machine has for its user.
void ReviewProperties(const PolicyElement& element, const Registered& registered, Remarks& findings,
                      Remarks& notes, const std::vector<std::string>& fullNames);

}  // namespace app
