#pragma once

// Profile (INI) files: sections of keys with values, both looked up without regard to case; the
// first of several that are alike counts. Blanks around names and values don't belong to them, nor
// does one pair of quotes around a value; a line that begins with ';' is a comment. A file is
// UTF-16 with a byte order mark or text of the ANSI code page. It is named by its full path, and no
// argument is null: neither the lists of names nor deletions are known here.

#include "platform/base.h"

#ifndef _WIN32

/// Returns the number at the beginning of the value, after a sign, modulo 2^32; 0 for a value
/// without one; `fallback` when file, section or key are missing.
UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, int fallback, LPCWSTR file);

/// Copies the value to `text` of `capacity` units, or `fallback` without its trailing blanks when
/// the value is missing. Returns the length without the NUL. A longer value is cut to `capacity` -
/// 1 units. The last error is ERROR_FILE_NOT_FOUND for a missing file, section or key,
/// ERROR_MORE_DATA for a cut value, else 0.
DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR fallback, LPWSTR text,
                               DWORD capacity, LPCWSTR file);

/// Sets the key to this value. Makes the file, as ANSI text, section and key as needed, but no
/// folder, and leaves every other line as it is. The file is replaced as a whole, and concurrent
/// writers take turns. FALSE and the last error on failure.
BOOL WritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR file);

#endif
