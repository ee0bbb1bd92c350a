#pragma once

// The Settings component over a setting file (setting_file.h), and what the interfaces leave open:
//
// - A Settings object belongs to the machine and user of the moment at which it first needs the
//   file. It opens the file then, not before; a missing file is made, with its folder.
// - Changes live in the object. Commit settles them, Save(0) writes what is settled; changes after
//   the last Commit are not written, and what is not saved goes with the object. A Save that failed
//   can be repeated. Any other mode is refused.
// - An entry's last setting is the one in effect: whether its printer prints watermarks, and which.
//   A custom setting has no effect of its own; it keeps a choice under its name.
// - PrinterSettings::Save replaces that one entry, in one transaction. Settings::Save writes the
//   exclude lists and the content-log switch, each change for itself, so that what others have
//   saved in between stays.
// - The index of an enumeration refers to the list as the last count found it, less what has been
//   deleted from it since.
// - Lock holds a file lock beside the setting file, however long it has to wait for it, and nests.
//   The end of its owner frees it. Whatever is saved or deleted without it waits up to 10 seconds
//   for those who hold it, and then fails. Reading never waits for it.
// - Text that is no valid UTF-16 is kept with U+FFFD in the place of each fault. A number that is
//   not finite is refused.
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

/// New objects with one reference. std::bad_alloc is the only failure.
Sigil::Settings* CreateSettings();
Sigil::String* CreateString();

}  // namespace peers
