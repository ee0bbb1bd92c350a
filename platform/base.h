#pragma once

// The basic types, results and error numbers of Windows. On Windows they come from the SDK;
// elsewhere this header declares those that are used, with the SDK's names and widths. `wchar_t`
// holds one UTF-16 code unit in both homes.

#ifdef _WIN32

#include <windows.h>

#else

#include <cstddef>
#include <cstdint>

#define WINAPI

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using ULONGLONG = std::uint64_t;
using SIZE_T = std::size_t;
using INT_PTR = std::intptr_t;
using HRESULT = std::int32_t;
using LPVOID = void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;
using HANDLE = void*;
using HLOCAL = void*;
using HMODULE = struct HINSTANCE__*;
using HINSTANCE = HMODULE;
using HWND = struct HWND__*;
using FARPROC = std::intptr_t (*)();

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using UUID = GUID;

bool operator==(const GUID& left, const GUID& right);

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;
constexpr std::size_t MAX_PATH = 260;

#define INVALID_HANDLE_VALUE reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1))

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_LOCK_VIOLATION = 33;
constexpr DWORD ERROR_BAD_NETPATH = 53;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_DISK_FULL = 112;
constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
constexpr DWORD ERROR_INVALID_NAME = 123;
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
constexpr DWORD ERROR_ALREADY_EXISTS = 183;
constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
constexpr DWORD ERROR_PIPE_BUSY = 231;
constexpr DWORD ERROR_NO_DATA = 232;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD ERROR_NOT_OWNER = 288;
constexpr DWORD ERROR_DLL_INIT_FAILED = 1114;
constexpr DWORD ERROR_UNKNOWN_REVISION = 1305;
constexpr DWORD ERROR_INVALID_USER_BUFFER = 1784;

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002U);
constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003U);
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);

constexpr bool SUCCEEDED(HRESULT result) {
  return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
  return result < 0;
}

/// The calling thread's last error, as the operations that fail leave it.
DWORD GetLastError();
void SetLastError(DWORD error);

/// Gives a mutex or pipe handle back. FALSE and the last error for a handle that is none.
BOOL CloseHandle(HANDLE handle);

#endif
