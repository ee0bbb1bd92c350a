#pragma once

// Conversion between wide text and the bytes of a code page.

#include "platform/base.h"

#ifndef _WIN32

constexpr UINT CP_ACP = 0;  ///< 932 (Japanese) on this machine.
constexpr UINT CP_UTF8 = 65001;
constexpr DWORD MB_PRECOMPOSED = 1;
constexpr DWORD MB_ERR_INVALID_CHARS = 8;
constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

/// Converts `size` bytes (-1: up to and with the first NUL) into `text` of `capacity` units, or
/// counts the units when `capacity` is 0. The number of units; 0 and the last error on failure:
/// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER (a null or empty source, an unknown code
/// page), or with MB_ERR_INVALID_CHARS ERROR_NO_UNICODE_TRANSLATION. Without that flag what is
/// ill-formed becomes U+FFFD in UTF-8, one for each maximal ill-formed part, and U+30FB in 932.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int size, LPWSTR text,
                        int capacity);

/// The way back, `capacity` in bytes. What the code page lacks becomes `*defaultChar` ('?' when
/// that is null; Windows first looks for a similar letter, as e for an accented one, which is not
/// done here), and `*usedDefault` tells whether there was any; in UTF-8 a lone surrogate becomes
/// U+FFFD, or with WC_ERR_INVALID_CHARS ERROR_NO_UNICODE_TRANSLATION, and both must be null.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR bytes,
                        int capacity, LPCSTR defaultChar, BOOL* usedDefault);

#endif
