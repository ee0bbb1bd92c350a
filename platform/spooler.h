#pragma once

// The print spooler's list of printers.

#include "platform/base.h"

#ifdef _WIN32

#include <winspool.h>

#else

constexpr DWORD PRINTER_ENUM_LOCAL = 2;
constexpr DWORD PRINTER_ENUM_CONNECTIONS = 4;

/// Of a record, the members that are read.
struct PRINTER_INFO_2W {
  LPWSTR pPrinterName;
  LPWSTR pDriverName;
  LPWSTR pComment;  ///< Null for a printer without one.
};

/// Fills `block` of `size` bytes, aligned for the record, with a PRINTER_INFO_2W for each printer
/// of the machine and their strings. `*needed` is the size it takes, in success and failure;
/// `*returned` the number of records. `flags` are both of the above, `server` is null and `level`
/// 2. FALSE and the last error: ERROR_INSUFFICIENT_BUFFER when `size` is too small,
/// ERROR_INVALID_USER_BUFFER for a null block of a size.
BOOL EnumPrintersW(DWORD flags, LPWSTR server, DWORD level, BYTE* block, DWORD size, LPDWORD needed,
                   LPDWORD returned);

#endif
