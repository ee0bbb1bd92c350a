#pragma once

// The properties of an element, and what became of each in the watermark's record.
//
// One table says which property fills which field, of which kind and in which form. The values come
// from the record alone.

#include <cstddef>
#include <string>

#include "app/rehearsal/document.h"
#include "app/rehearsal/rehearse.h"
#include "app/rehearsal/remarks.h"

namespace app {

/// The property that decides on the kind.
inline constexpr char kKind[] = "Kind";

/// How many times the text has {WinUser}, which the update fills in.
std::size_t CountUsers(const std::string& text);

/// Compares each property of the element, which is registered, with the record, and adds each
/// difference to `findings`, and to `notes` what the element lacks.
void ReviewProperties(const PolicyElement& element, const Registered& registered, Remarks& findings,
                      Remarks& notes);

}  // namespace app
