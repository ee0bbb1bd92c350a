#include <windows.h>
// After windows.h.
#include <wincrypt.h>

#include <algorithm>
#include <stdexcept>

#include "app/machine/policy_file.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr auto kReleaseProvider = [](HCRYPTPROV provider) { CryptReleaseContext(provider, 0); };
constexpr auto kDestroyHash = [](HCRYPTHASH hash) { CryptDestroyHash(hash); };
constexpr auto kDestroyKey = [](HCRYPTKEY key) { CryptDestroyKey(key); };
using Provider = Owner<HCRYPTPROV, kReleaseProvider>;

// CALG_SHA_256, which the headers have for later systems only.
constexpr ALG_ID kSha256 = ALG_CLASS_HASH | ALG_TYPE_ANY | 12;

void Check(BOOL result) {
  if (!result)
    throw std::runtime_error(WithError("the system's cryptography fails", GetLastError()));
}

Provider OpenProvider() {
  Provider provider;
  Check(CryptAcquireContextW(provider.Out(), nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
  return provider;
}

}  // namespace

std::string Encrypt(std::string_view message, const PolicyKey& key) {
  struct {
    BLOBHEADER header = {PLAINTEXTKEYBLOB, CUR_BLOB_VERSION, 0, CALG_AES_256};
    DWORD size = 32;
    BYTE bytes[32];
  } plain;
  std::copy_n(key.key.GetData(), sizeof plain.bytes, plain.bytes);
  const Provider provider = OpenProvider();
  Owner<HCRYPTKEY, kDestroyKey> cipher;
  Check(CryptImportKey(provider.Get(), reinterpret_cast<const BYTE*>(&plain), sizeof plain, 0, 0,
                       cipher.Out()));
  constexpr DWORD kMode = CRYPT_MODE_CBC;
  Check(CryptSetKeyParam(cipher.Get(), KP_MODE, reinterpret_cast<const BYTE*>(&kMode), 0));
  Check(CryptSetKeyParam(cipher.Get(), KP_IV, key.vector.GetData(), 0));
  std::string result(message);
  auto size = static_cast<DWORD>(result.size());
  // It is not called the last part, which would get a block of padding.
  Check(
      CryptEncrypt(cipher.Get(), 0, FALSE, 0, reinterpret_cast<BYTE*>(result.data()), &size, size));
  return result;
}

std::string ChecksumOf(const std::wstring& text) {
  const std::string bytes = platform::ToUtf8(text);
  const Provider provider = OpenProvider();
  Owner<HCRYPTHASH, kDestroyHash> hashing;
  Check(CryptCreateHash(provider.Get(), kSha256, 0, 0, hashing.Out()));
  const HCRYPTHASH hash = hashing.Get();
  Check(CryptHashData(hash, reinterpret_cast<const BYTE*>(bytes.data()),
                      static_cast<DWORD>(bytes.size()), 0));
  BYTE digest[32];
  DWORD size = sizeof digest;
  Check(CryptGetHashParam(hash, HP_HASHVAL, digest, &size, 0));
  return Hexadecimal(digest);
}

}  // namespace app
