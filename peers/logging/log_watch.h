#pragma once

// Lets a host watch the messages of its own process, including those that do not reach the file
// because of their level or a full disk.

#include "logging/log4cxx_mgr.h"

namespace logging {

/// Receives one message. The texts are valid during the call only; `text` is complete with its
/// values.
using Watcher = void (*)(int level, int number, const wchar_t* function, const wchar_t* text);

}  // namespace logging

/// Passes every further message to `watcher`, on the thread that logs it; null ends that. A watcher
/// must not throw. Hosts find this function by its name in the loaded log.
extern "C" LOG4CXX_MGR_API void SigilWatchLog(logging::Watcher watcher);

using SigilWatchLogFunction = decltype(SigilWatchLog);
