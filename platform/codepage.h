#pragma once

// Conversion between wide text and the bytes of a code page.

#include "platform/base.h"

#ifndef _WIN32

constexpr UINT CP_ACP = 0;  ///< 932 (Japanese) on this machine, as is every page but UTF-8.
constexpr UINT CP_UTF8 = 65001;

/// Converts `size` bytes into `text` of `capacity` units, or counts the units when `capacity` is 0.
/// Returns the number of units; 0 for no bytes, and with ERROR_INSUFFICIENT_BUFFER when there is
/// too little room. Ill-formed UTF-8 becomes U+FFFD, one for each maximal ill-formed part;
/// ill-formed 932 becomes U+30FB. `flags` is 0.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR bytes, int size, LPWSTR text,
                        int capacity);

/// Converts back to 932, with `capacity` in bytes. A `length` of -1 is all up to and with the first
/// NUL. A character that 932 lacks becomes '?'; Windows would first look for a similar letter.
/// `flags` is 0, the last two are null.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR bytes,
                        int capacity, LPCSTR defaultChar, BOOL* usedDefault);

#endif
