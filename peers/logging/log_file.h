#pragma once

// The log file, as each home writes it. It is
//
//   C:\ProgramData\KBR-LTD\QuietMIMOSA\HarborLedge\log\SigilSetting.log
//
// unless the environment variable SIGIL_LOG names another path of the host. Any number of processes
// append to it. It is opened for each line, so it may be moved or deleted at any time, and a change
// of the machine or of the variable has effect at once.

#include <string_view>

namespace logging {

/// As a Windows path.
inline constexpr wchar_t kLogFile[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";

/// Returns the lowest level that is written: the number in the environment variable
/// SIGIL_LOG_LEVEL, which is read at each call, or 0.
int LowestLevel();

/// Appends one line, whole: local time with milliseconds, the process's number, then `text`, UTF-8
/// without a line end. A line that cannot be written is dropped. Throws std::bad_alloc only.
///
///   2025-03-31 09:12:45.678 4711 TEXT
void Append(std::string_view text);

}  // namespace logging
