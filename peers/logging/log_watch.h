#pragma once

// How a host sees what is logged in its own process, whatever becomes of the file: a level that is
// left out and a full disk keep lines from the file, but not from here.

#include "logging/log4cxx_mgr.h"

namespace logging {

/// One message, before it becomes a line. The texts are read during the call only; `text` has its
/// values in it.
using Watcher = void (*)(int level, int number, const wchar_t* function, const wchar_t* text);

}  // namespace logging

/// Has every message from now on told to `watcher` too, on the thread that logs it; null ends that.
/// A watcher must not throw. Found by its name in the loaded log.
extern "C" LOG4CXX_MGR_API void SigilWatchLog(logging::Watcher watcher);

using SigilWatchLogFunction = decltype(SigilWatchLog);
