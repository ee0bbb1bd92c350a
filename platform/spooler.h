#pragma once

// The print spooler's list of printers.

#include "platform/base.h"

#ifdef _WIN32

#include <winspool.h>

#else

#include "platform/security.h"

struct DEVMODEW;

constexpr DWORD PRINTER_ENUM_LOCAL = 2;
constexpr DWORD PRINTER_ENUM_CONNECTIONS = 4;
constexpr DWORD PRINTER_ATTRIBUTE_NETWORK = 0x10;
constexpr DWORD PRINTER_ATTRIBUTE_LOCAL = 0x40;

struct PRINTER_INFO_2W {
  LPWSTR pServerName;  ///< Null for a local printer.
  LPWSTR pPrinterName;
  LPWSTR pShareName;
  LPWSTR pPortName;
  LPWSTR pDriverName;
  LPWSTR pComment;  ///< Null for a printer without one.
  LPWSTR pLocation;
  DEVMODEW* pDevMode;
  LPWSTR pSepFile;
  LPWSTR pPrintProcessor;
  LPWSTR pDatatype;
  LPWSTR pParameters;
  PSECURITY_DESCRIPTOR pSecurityDescriptor;
  DWORD Attributes;
  DWORD Priority;
  DWORD DefaultPriority;
  DWORD StartTime;
  DWORD UntilTime;
  DWORD Status;
  DWORD cJobs;
  DWORD AveragePPM;
};

/// Fills `block` of `size` bytes, aligned for the record, with a PRINTER_INFO_2W for each printer
/// that `flags` ask for (PRINTER_ENUM_LOCAL, PRINTER_ENUM_CONNECTIONS) and their strings. `*needed`
/// is the size it takes, in success and failure; `*returned` the number of records. `server` is
/// null or empty, `level` 2. FALSE and the last error: ERROR_INSUFFICIENT_BUFFER when `size` is too
/// small, ERROR_INVALID_USER_BUFFER for a null block of a size, ERROR_INVALID_LEVEL,
/// ERROR_INVALID_NAME for a server.
BOOL EnumPrintersW(DWORD flags, LPWSTR server, DWORD level, BYTE* block, DWORD size, LPDWORD needed,
                   LPDWORD returned);

#endif
