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
constexpr DWORD HP_HASHVAL = 2;

constexpr DWORD NTE_FAIL = 0x80090020;

// All return FALSE and the last error on failure.

/// Opens the provider without key container: `container` and `provider` are null, `type` is
/// PROV_RSA_FULL and `flags` has CRYPT_VERIFYCONTEXT.
BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR container, LPCWSTR provider, DWORD type,
                          DWORD flags);

/// Starts a digest. `algorithm` is CALG_MD5 (RFC 1321), `key` and `flags` are 0.
BOOL CryptCreateHash(HCRYPTPROV context, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash);

/// Adds bytes. `flags` is 0.
BOOL CryptHashData(HCRYPTHASH hash, const BYTE* bytes, DWORD count, DWORD flags);

/// Ends the digest and writes its 16 bytes to `value`. `parameter` is HP_HASHVAL, `*size` 16 and
/// `flags` 0.
BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* value, DWORD* size, DWORD flags);

BOOL CryptDestroyHash(HCRYPTHASH hash);
BOOL CryptReleaseContext(HCRYPTPROV context, DWORD flags);

#endif
