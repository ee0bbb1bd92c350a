#pragma once

// The shell's well-known folders, and the allocator of what it hands out.

#ifdef _WIN32

#include <shlobj.h>

#include "platform/base.h"

#else

#include "platform/com.h"

constexpr int CSIDL_LOCAL_APPDATA = 0x1C;
constexpr int CSIDL_COMMON_APPDATA = 0x23;

using REFKNOWNFOLDERID = const GUID&;
constexpr GUID FOLDERID_LocalAppDataLow = {
    0xA520A1A4, 0x1780, 0x4FF6, {0xBD, 0x18, 0x16, 0x73, 0x43, 0xC5, 0xAF, 0x16}};

/// A path of items in the shell's namespace.
struct ITEMIDLIST;
using LPITEMIDLIST = ITEMIDLIST*;
using LPCITEMIDLIST = const ITEMIDLIST*;

/// The shell's allocator, one for the process, which CoTaskMemFree shares.
HRESULT SHGetMalloc(IMalloc** allocator);

/// The folder `csidl` as an item list, to be freed with the shell's allocator. E_INVALIDARG and
/// null for an unknown folder.
HRESULT SHGetSpecialFolderLocation(HWND owner, int csidl, LPITEMIDLIST* list);

/// Writes the path of an item list to `path`, a buffer of MAX_PATH units. FALSE for what is no list
/// of a folder, and `path` is then empty.
BOOL SHGetPathFromIDListW(LPCITEMIDLIST list, LPWSTR path);

/// Writes the path of the folder `csidl` to `path`, a buffer of MAX_PATH units. `create` is FALSE.
BOOL SHGetSpecialFolderPathW(HWND owner, LPWSTR path, int csidl, BOOL create);

/// The path of a known folder, to be freed with CoTaskMemFree whatever the result. The user's own
/// (a null token) and no flags are known. HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) and null for an
/// unknown folder.
HRESULT SHGetKnownFolderPath(REFKNOWNFOLDERID folder, DWORD flags, HANDLE token, LPWSTR* path);

#endif
