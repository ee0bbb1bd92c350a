#pragma once

// Pipes, files and folders, and the texts of paths.

#include "platform/base.h"
#include "platform/security.h"

#ifdef _WIN32

#include <shlwapi.h>

#else

constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD OPEN_EXISTING = 3;

struct OVERLAPPED;

/// Opens the client end of the pipe `\\.\pipe\NAME` that exists. Only GENERIC_WRITE, OPEN_EXISTING
/// and flags 0 are known; share mode and attributes are not looked at. INVALID_HANDLE_VALUE and the
/// last error: ERROR_FILE_NOT_FOUND for a pipe without a server, ERROR_PIPE_BUSY when the server
/// takes no more clients now.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, const SECURITY_ATTRIBUTES* attributes,
                   DWORD disposition, DWORD flags, HANDLE templateFile);

/// Writes `count` bytes to a pipe as one message, waiting until they are taken. FALSE and the last
/// error, ERROR_NO_DATA when the server has closed its end. `*written` is the number of bytes
/// written, 0 on failure. `overlapped` is null.
BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, LPDWORD written,
               OVERLAPPED* overlapped);

/// Returns whether there is a file or folder of this name, FALSE for null. Sets the last error if
/// not.
BOOL PathFileExistsW(LPCWSTR path);

/// Returns the attribute of folders, which is not TRUE, for a folder; else FALSE.
BOOL PathIsDirectoryW(LPCWSTR path);

/// Takes the last piece and the backslash before it off `path`; a root, as `C:\` or `\`, stays. Not
/// FALSE when something was taken off.
BOOL PathRemoveFileSpecW(LPWSTR path);

/// Joins `more`, a relative path without the pieces `.` and `..`, to `path`, a buffer of MAX_PATH
/// units at least, with one backslash between them. FALSE when the result has MAX_PATH units or
/// more, and `path` is then empty.
BOOL PathAppendW(LPWSTR path, LPCWSTR more);

#endif
