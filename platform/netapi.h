#pragma once

// The workstation, its domain and the accounts of both.

#include "platform/base.h"

#ifdef _WIN32

#include <lm.h>

#else

using NET_API_STATUS = DWORD;

constexpr NET_API_STATUS NERR_Success = 0;
constexpr NET_API_STATUS NERR_UserNotFound = 2221;
constexpr NET_API_STATUS NERR_DCNotFound = 2453;

enum NETSETUP_JOIN_STATUS {
  NetSetupUnknownStatus = 0,
  NetSetupWorkgroupName = 2,
  NetSetupDomainName = 3,
};

// Of the records, the members that are read. A text may be null.

struct WKSTA_INFO_100 {
  LPWSTR wki100_langroup;  ///< The domain or workgroup.
};

struct USER_INFO_10 {
  LPWSTR usri10_full_name;
};

struct USER_INFO_11 {
  LPWSTR usri11_full_name;
};

// The caller frees each buffer with NetApiBufferFree; it is null on failure. A null `server` is
// this machine.

/// A WKSTA_INFO_100 of this machine. `level` is 100 and `server` null.
NET_API_STATUS NetWkstaGetInfo(LPWSTR server, DWORD level, BYTE** record);

/// The name of this machine's domain or workgroup, and NetSetupDomainName or NetSetupWorkgroupName.
/// `server` is null.
NET_API_STATUS NetGetJoinInformation(LPCWSTR server, LPWSTR* name, NETSETUP_JOIN_STATUS* status);

/// The name of the controller of the domain, as `\\NAME`. NERR_DCNotFound when there is none or the
/// domain is not the machine's own. `server` is null.
NET_API_STATUS NetGetDCName(LPCWSTR server, LPCWSTR domain, BYTE** name);

/// Level 10: a USER_INFO_10, level 11: a USER_INFO_11, of this machine's account or that of a
/// controller (`\\NAME`). Login names are compared without regard to case. NERR_UserNotFound;
/// ERROR_BAD_NETPATH for a machine that is no controller.
NET_API_STATUS NetUserGetInfo(LPCWSTR server, LPCWSTR user, DWORD level, BYTE** record);

/// NERR_Success. A null buffer is left alone.
NET_API_STATUS NetApiBufferFree(LPVOID buffer);

/// The login name of the process. `*size` counts units with the NUL: going in the capacity, coming
/// out the name's, also on failure. FALSE and ERROR_INSUFFICIENT_BUFFER when it does not fit.
BOOL GetUserNameW(LPWSTR name, LPDWORD size);

#endif
