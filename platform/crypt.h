#pragma once

// The cryptographic service, for one digest.

#include "platform/base.h"

#ifdef _WIN32

#include <wincrypt.h>

#else

using HCRYPTPROV = std::uintptr_t;
using HCRYPTKEY = std::uintptr_t;
using HCRYPTHASH = std::uintptr_t;
using ALG_ID = unsigned int;

constexpr DWORD PROV_RSA_FULL = 1;
constexpr DWORD CRYPT_VERIFYCONTEXT = 0xF0000000;
constexpr DWORD CRYPT_MACHINE_KEYSET = 0x20;
constexpr ALG_ID CALG_MD5 = 0x8003;
constexpr DWORD HP_ALGID = 1;
constexpr DWORD HP_HASHVAL = 2;
constexpr DWORD HP_HASHSIZE = 4;

constexpr DWORD NTE_BAD_KEY = 0x80090003;
constexpr DWORD NTE_BAD_ALGID = 0x80090008;
constexpr DWORD NTE_BAD_FLAGS = 0x80090009;
constexpr DWORD NTE_BAD_TYPE = 0x8009000A;
constexpr DWORD NTE_BAD_HASH_STATE = 0x8009000C;
constexpr DWORD NTE_BAD_KEYSET = 0x80090016;
constexpr DWORD NTE_PROV_TYPE_NOT_DEF = 0x80090017;
constexpr DWORD NTE_KEYSET_NOT_DEF = 0x80090019;
constexpr DWORD NTE_FAIL = 0x80090020;

/// Opens a provider without key container: `container` and `provider` are null, `type` is
/// PROV_RSA_FULL and `flags` has CRYPT_VERIFYCONTEXT. FALSE and the last error otherwise.
BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR container, LPCWSTR provider, DWORD type,
                          DWORD flags);

/// Starts a digest. FALSE and NTE_BAD_ALGID for another algorithm than CALG_MD5 (RFC 1321).
BOOL CryptCreateHash(HCRYPTPROV context, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash);

/// Adds bytes. FALSE and NTE_BAD_HASH_STATE after the value was fetched.
BOOL CryptHashData(HCRYPTHASH hash, const BYTE* bytes, DWORD count, DWORD flags);

/// HP_HASHVAL ends the digest and gives its 16 bytes, HP_HASHSIZE the number 16, HP_ALGID the
/// algorithm, into `value` with room for `*size` bytes. `*size` becomes the size needed; with a
/// null `value` that is all, with too little room FALSE and ERROR_MORE_DATA.
BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* value, DWORD* size, DWORD flags);

BOOL CryptDestroyHash(HCRYPTHASH hash);
BOOL CryptReleaseContext(HCRYPTPROV context, DWORD flags);

#endif
