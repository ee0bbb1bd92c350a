#pragma once

// Conversion between wide text and the bytes of a code page.

#include "platform/base.h"

#ifndef _WIN32

constexpr UINT CP_ACP = 0;  ///< 932 (Japanese) on this machine, as is every page but UTF-8.
constexpr UINT CP_UTF8 = 65001;

/// Converts `size` bytes into `text` of `capacity` units, or counts the units when `capacity` is 0.
/// The number of units; 0 for no bytes, and with ERROR_INSUFFICIENT_BUFFER when there is too little
/// room. What is ill-formed becomes U+FFFD in UTF-8, one for each maximal ill-formed part, and
/// U+30FB in 932. `flags` is 0.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int size, LPWSTR text,
                        int capacity);

/// The way back to 932, `capacity` in bytes; a `length` of -1 is all up to and with the first NUL.
/// What the code page lacks becomes '?' (Windows first looks for a similar letter, as e for an
/// accented one, which is not done here). `flags` is 0, the last two are null.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR bytes,
                        int capacity, LPCSTR defaultChar, BOOL* usedDefault);

#endif
