#include <windows.h>
// After windows.h.
#include <wincrypt.h>

#include <stdexcept>

#include "app/machine/policy_file.h"
#include "app/text/wording.h"
#include "platform/owner.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr auto kReleaseProvider = [](HCRYPTPROV provider) { CryptReleaseContext(provider, 0); };
constexpr auto kDestroyHash = [](HCRYPTHASH hash) { CryptDestroyHash(hash); };

// CALG_SHA_256, which the headers have for later systems only.
constexpr ALG_ID kSha256 = ALG_CLASS_HASH | ALG_TYPE_ANY | 12;

void Check(BOOL result) {
  if (!result) throw std::runtime_error("the system's SHA-256 cannot be had");
}

}  // namespace

std::string ChecksumOf(const std::wstring& text) {
  const std::string bytes = platform::ToUtf8(text);
  HCRYPTPROV provider = 0;
  Check(CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
  const Owner<HCRYPTPROV, kReleaseProvider> opened(provider);
  HCRYPTHASH hash = 0;
  Check(CryptCreateHash(provider, kSha256, 0, 0, &hash));
  const Owner<HCRYPTHASH, kDestroyHash> hashing(hash);
  Check(CryptHashData(hash, reinterpret_cast<const BYTE*>(bytes.data()),
                      static_cast<DWORD>(bytes.size()), 0));
  BYTE digest[32];
  DWORD size = sizeof digest;
  Check(CryptGetHashParam(hash, HP_HASHVAL, digest, &size, 0));
  return Hexadecimal(digest);
}

}  // namespace app
