#pragma once

// The Settings component over a setting file (setting_file.h). The interfaces leave some points
// open; here they are settled so:
//
// - A Settings object opens the file when it first needs it, and then belongs to the machine and
// user
//   of that moment. A missing file is made, with its folder.
// - Changes stay in the object. Save(0) writes those that were made before the last Commit; the
//   others are lost with the object. A failed Save can be repeated. Any other mode is refused.
// - An entry's last setting is the one in effect: whether its printer prints watermarks, and which.
//   A custom setting has no effect of its own; it keeps a choice under its name.
// - PrinterSettings::Save replaces that one entry, in one transaction. Settings::Save writes the
//   exclude lists and the content-log switch, each change by itself, so that changes which others
//   have saved meanwhile stay.
// - The index of an enumeration refers to the list of the last count, without the entries deleted
//   since.
// - Lock takes a lock on a file beside the setting file, waits for it without limit, and nests. The
//   kernel releases it when its owner dies. Saving or deleting without the lock waits up to 10
//   seconds for it and then fails. Reading never waits.
// - Ill-formed UTF-16 is kept with U+FFFD in its place. A number that is not finite is refused.
// - A null pointer where one is needed, an index or a name that is not there, and every failure of
//   the file give a negative result and change nothing.
// - Objects of one Settings may outlive it; they and it belong to one thread at a time.

#include "component/sigil_interfaces.h"

namespace peers {

/// Negative results beside those of the interface.
enum ComponentResult : std::int32_t {
  kFailed = static_cast<std::int32_t>(0x80000002U),
  kBadArgument = static_cast<std::int32_t>(0x80000003U),
  kNotFound = static_cast<std::int32_t>(0x80000004U),
};

/// Returns a new object with one reference. Throws std::bad_alloc only.
Sigil::Settings* CreateSettings();
Sigil::String* CreateString();

}  // namespace peers
