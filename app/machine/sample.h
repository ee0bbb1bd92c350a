#pragma once

// The sample machine: the files of app/sample, embedded by CMake.

namespace app::sample {

extern const char kMachine[];  ///< machine.ini
extern const char kPolicy[];   ///< policy.xml

}  // namespace app::sample
