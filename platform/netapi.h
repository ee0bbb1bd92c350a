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
  NetSetupUnjoined,
  NetSetupWorkgroupName,
  NetSetupDomainName,
};

struct WKSTA_INFO_100 {
  DWORD wki100_platform_id;
  LPWSTR wki100_computername;
  LPWSTR wki100_langroup;  ///< The domain or workgroup.
  DWORD wki100_ver_major;
  DWORD wki100_ver_minor;
};

struct USER_INFO_10 {
  LPWSTR usri10_name;
  LPWSTR usri10_comment;
  LPWSTR usri10_usr_comment;
  LPWSTR usri10_full_name;
};

struct USER_INFO_11 {
  LPWSTR usri11_name;
  LPWSTR usri11_comment;
  LPWSTR usri11_usr_comment;
  LPWSTR usri11_full_name;
  DWORD usri11_priv;
  DWORD usri11_auth_flags;
  DWORD usri11_password_age;
  LPWSTR usri11_home_dir;
  LPWSTR usri11_parms;
  DWORD usri11_last_logon;
  DWORD usri11_last_logoff;
  DWORD usri11_bad_pw_count;
  DWORD usri11_num_logons;
  LPWSTR usri11_logon_server;
  DWORD usri11_country_code;
  LPWSTR usri11_workstations;
  DWORD usri11_max_storage;
  DWORD usri11_units_per_week;
  BYTE* usri11_logon_hours;
  DWORD usri11_code_page;
};

// What each hands out is given back with NetApiBufferFree and null on failure. `server` is null or
// empty for this machine; ERROR_BAD_NETPATH is the result for a machine that cannot be reached,
// ERROR_INVALID_LEVEL for a level not named, ERROR_INVALID_PARAMETER for a null out-parameter.

/// Level 100: a WKSTA_INFO_100. Of this machine only.
NET_API_STATUS NetWkstaGetInfo(LPWSTR server, DWORD level, BYTE** record);

/// The name of the domain or workgroup, and NetSetupDomainName or NetSetupWorkgroupName. Of this
/// machine only.
NET_API_STATUS NetGetJoinInformation(LPCWSTR server, LPWSTR* name, NETSETUP_JOIN_STATUS* status);

/// The name of the controller of a domain (null: the machine's own), as `\\NAME`. NERR_DCNotFound
/// when there is none or the domain is another one.
NET_API_STATUS NetGetDCName(LPCWSTR server, LPCWSTR domain, BYTE** name);

/// Level 10: a USER_INFO_10, level 11: a USER_INFO_11, of this machine's account or that of a
/// controller (`\\NAME`). Login names are compared without regard to case. NERR_UserNotFound.
NET_API_STATUS NetUserGetInfo(LPCWSTR server, LPCWSTR user, DWORD level, BYTE** record);

/// NERR_Success. A null buffer is left alone.
NET_API_STATUS NetApiBufferFree(LPVOID buffer);

/// The login name of the process. `*size` counts units with the NUL: going in the capacity, coming
/// out the name's, also on failure. FALSE and ERROR_INSUFFICIENT_BUFFER when it does not fit.
BOOL GetUserNameW(LPWSTR name, LPDWORD size);

#endif
