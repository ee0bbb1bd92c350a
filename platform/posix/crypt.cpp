#include "platform/crypt.h"

#include <openssl/evp.h>

#include "platform/owner.h"
#include "platform/posix/handle.h"

using platform::FailWith;
using platform::IsToFail;

namespace {

constexpr HCRYPTPROV kProvider = 1;  // OpenSSL's needs no opening

EVP_MD_CTX* Context(HCRYPTHASH hash) {
  return reinterpret_cast<EVP_MD_CTX*>(hash);
}

BOOL ResultOf(int isDone) {
  return isDone == 1 ? TRUE : FailWith(NTE_FAIL);
}

}  // namespace

BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR, LPCWSTR, DWORD, DWORD) {
  if (IsToFail("CryptAcquireContextW")) return FALSE;
  *context = kProvider;
  return TRUE;
}

BOOL CryptCreateHash(HCRYPTPROV, ALG_ID, HCRYPTKEY, DWORD, HCRYPTHASH* hash) {
  if (IsToFail("CryptCreateHash")) return FALSE;
  Owner<EVP_MD_CTX*, EVP_MD_CTX_free> context(EVP_MD_CTX_new());
  if (!context || EVP_DigestInit_ex(context.Get(), EVP_md5(), nullptr) != 1)
    return FailWith(NTE_FAIL);
  *hash = reinterpret_cast<HCRYPTHASH>(context.Release());
  return TRUE;
}

BOOL CryptHashData(HCRYPTHASH hash, const BYTE* bytes, DWORD count, DWORD) {
  if (IsToFail("CryptHashData")) return FALSE;
  return ResultOf(EVP_DigestUpdate(Context(hash), bytes, count));
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD, BYTE* value, DWORD*, DWORD) {
  if (IsToFail("CryptGetHashParam")) return FALSE;
  return ResultOf(EVP_DigestFinal_ex(Context(hash), value, nullptr));
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  EVP_MD_CTX_free(Context(hash));
  return TRUE;
}

BOOL CryptReleaseContext(HCRYPTPROV, DWORD) {
  return TRUE;
}
