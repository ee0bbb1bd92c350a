#include "platform/crypt.h"

#include <openssl/evp.h>

#include <array>
#include <cstring>
#include <memory>

#include "platform/posix/handle.h"

namespace {

constexpr DWORD kDigestSize = 16;

using platform::FailWith;
using platform::IsToFail;

struct Provider {};

class Hash {
 public:
  Hash() : m_context(EVP_MD_CTX_new()) {}

  bool Start() { return m_context && EVP_DigestInit_ex(m_context.get(), EVP_md5(), nullptr) == 1; }

  BOOL Add(const BYTE* bytes, DWORD count) {
    if (m_isEnded) return FailWith(NTE_BAD_HASH_STATE);
    return EVP_DigestUpdate(m_context.get(), bytes, count) == 1 ? TRUE : FailWith(NTE_FAIL);
  }

  bool End() {
    if (!m_isEnded && EVP_DigestFinal_ex(m_context.get(), m_value.data(), nullptr) != 1)
      return false;
    return m_isEnded = true;
  }
  const BYTE* Value() const { return m_value.data(); }

 private:
  struct Free {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
  };

  std::unique_ptr<EVP_MD_CTX, Free> m_context;
  bool m_isEnded = false;
  std::array<BYTE, kDigestSize> m_value = {};
};

platform::HandleTable<Provider>& Providers() {
  static platform::HandleTable<Provider> providers;
  return providers;
}

platform::HandleTable<Hash>& Hashes() {
  static platform::HandleTable<Hash> hashes;
  return hashes;
}

/// Hands `needed` bytes over by the rules that all parameters share.
BOOL Give(const void* bytes, DWORD needed, BYTE* value, DWORD* size) {
  const DWORD room = *size;
  *size = needed;
  if (value == nullptr) return TRUE;
  if (room < needed) return FailWith(ERROR_MORE_DATA);
  std::memcpy(value, bytes, needed);
  return TRUE;
}

}  // namespace

BOOL CryptAcquireContextW(HCRYPTPROV* context, LPCWSTR container, LPCWSTR provider, DWORD type,
                          DWORD flags) {
  if (IsToFail("CryptAcquireContextW")) return FALSE;
  if (context == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
  if (type != PROV_RSA_FULL) return FailWith(NTE_PROV_TYPE_NOT_DEF);
  if (provider != nullptr) return FailWith(NTE_KEYSET_NOT_DEF);
  if ((flags & ~(CRYPT_VERIFYCONTEXT | CRYPT_MACHINE_KEYSET)) != 0) return FailWith(NTE_BAD_FLAGS);
  if ((flags & CRYPT_VERIFYCONTEXT) != CRYPT_VERIFYCONTEXT) return FailWith(NTE_BAD_KEYSET);
  if (container != nullptr) return FailWith(NTE_BAD_FLAGS);
  *context = Providers().Add(std::make_shared<Provider>());
  return TRUE;
}

BOOL CryptCreateHash(HCRYPTPROV context, ALG_ID algorithm, HCRYPTKEY key, DWORD flags,
                     HCRYPTHASH* hash) {
  if (IsToFail("CryptCreateHash")) return FALSE;
  if (Providers().Find(context) == nullptr) return FALSE;
  if (hash == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
  if (algorithm != CALG_MD5) return FailWith(NTE_BAD_ALGID);
  if (key != 0) return FailWith(NTE_BAD_KEY);
  if (flags != 0) return FailWith(NTE_BAD_FLAGS);
  auto started = std::make_shared<Hash>();
  if (!started->Start()) return FailWith(NTE_FAIL);
  *hash = Hashes().Add(std::move(started));
  return TRUE;
}

BOOL CryptHashData(HCRYPTHASH hash, const BYTE* bytes, DWORD count, DWORD flags) {
  if (IsToFail("CryptHashData")) return FALSE;
  const auto found = Hashes().Find(hash);
  if (found == nullptr) return FALSE;
  if (flags != 0) return FailWith(NTE_BAD_FLAGS);
  if (bytes == nullptr && count > 0) return FailWith(ERROR_INVALID_PARAMETER);
  return found->Add(bytes, count);
}

BOOL CryptGetHashParam(HCRYPTHASH hash, DWORD parameter, BYTE* value, DWORD* size, DWORD flags) {
  if (IsToFail("CryptGetHashParam")) return FALSE;
  const auto found = Hashes().Find(hash);
  if (found == nullptr) return FALSE;
  if (flags != 0) return FailWith(NTE_BAD_FLAGS);
  if (size == nullptr) return FailWith(ERROR_INVALID_PARAMETER);
  constexpr ALG_ID kAlgorithm = CALG_MD5;
  switch (parameter) {
    case HP_ALGID:
      return Give(&kAlgorithm, sizeof kAlgorithm, value, size);
    case HP_HASHSIZE:
      return Give(&kDigestSize, sizeof kDigestSize, value, size);
    case HP_HASHVAL:
      if (value != nullptr && *size >= kDigestSize && !found->End()) return FailWith(NTE_FAIL);
      return Give(found->Value(), kDigestSize, value, size);
    default:
      return FailWith(NTE_BAD_TYPE);
  }
}

BOOL CryptDestroyHash(HCRYPTHASH hash) {
  return !IsToFail("CryptDestroyHash") && Hashes().Take(hash) != nullptr;
}

BOOL CryptReleaseContext(HCRYPTPROV context, DWORD flags) {
  if (IsToFail("CryptReleaseContext")) return FALSE;
  if (flags != 0) return FailWith(NTE_BAD_FLAGS);
  return Providers().Take(context) != nullptr;
}
