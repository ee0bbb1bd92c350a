#pragma once

// What goes another way than usual, in the words of a transcript:
//
//   CreateMutexW fails                      an operation of the machine, at every call
//   EnumPrintersW fails after 1             at every call after that many good ones
//   NetUserGetInfo fails with 2221          with that error, where it is not that access is denied
//   CreateFileW throws
//   call 1 of Settings::Save gives -1       a call of the component, counted from now
//   each call of Settings::Save(0) throws
//   "watermarks *" is 3                     what the component holds
//
// Several are joined by " and ".

#include <string>

namespace tests {

/// Sees to all of them, or gives false: one is not possible in this home or with this component.
bool Arrange(const std::string& causes);

}  // namespace tests
