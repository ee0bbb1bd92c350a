#pragma once

// Loading of libraries at run time. Names compare without regard to case on Windows; elsewhere a
// file's name is what it is.

#include "platform/base.h"

/// Marks a function that a library shows to its hosts.
#ifdef _WIN32
#define MODULE_EXPORT __declspec(dllexport)
#else
#define MODULE_EXPORT __attribute__((visibility("default")))
#endif

#ifndef _WIN32

constexpr DWORD DLL_PROCESS_DETACH = 0;
constexpr DWORD DLL_PROCESS_ATTACH = 1;
constexpr DWORD DLL_THREAD_DETACH = 3;

/// Loads the library of this full path, or counts one more use of it when it is loaded. The one
/// name without folder is "shell32.dll". Null and the last error on failure (ERROR_MOD_NOT_FOUND,
/// ERROR_DLL_INIT_FAILED, and ERROR_ACCESS_DENIED for a path of the machine, which holds no code).
HMODULE LoadLibraryW(LPCWSTR path);

/// Ends one use; the last one unloads the library. FALSE and the last error for a module that is
/// none.
BOOL FreeLibrary(HMODULE module);

/// The address of a function of the library. Null and ERROR_PROC_NOT_FOUND without it.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// A library that this process has loaded by LoadLibraryW, by its file name, without counting a
/// use. Null and ERROR_MOD_NOT_FOUND when it is not loaded.
HMODULE GetModuleHandleW(LPCWSTR name);

/// The full path of the host executable, as LoadLibraryW and the path operations take it, into
/// `path` of `capacity` units. Its length without the terminator; when it does not fit, the start
/// of it, terminated, the result `capacity` and the last error ERROR_INSUFFICIENT_BUFFER. 0 on
/// failure. `module` is null.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD capacity);

#endif
