#include <windows.h>
// After windows.h.
#include <wincrypt.h>

#include <cstring>

#include "tests/support/seal.h"

namespace tests {

namespace {

struct PlainKey {
  BLOBHEADER header = {PLAINTEXTKEYBLOB, CUR_BLOB_VERSION, 0, CALG_AES_256};
  DWORD size = 32;
  BYTE bytes[32];
};

}  // namespace

std::string Seal(std::string_view clear, const Key& key) {
  HCRYPTPROV provider = 0;
  CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT);
  PlainKey plain;
  std::memcpy(plain.bytes, key.key.data(), sizeof plain.bytes);
  HCRYPTKEY cipher = 0;
  CryptImportKey(provider, reinterpret_cast<const BYTE*>(&plain), sizeof plain, 0, 0, &cipher);
  DWORD mode = CRYPT_MODE_CBC;
  CryptSetKeyParam(cipher, KP_MODE, reinterpret_cast<const BYTE*>(&mode), 0);
  CryptSetKeyParam(cipher, KP_IV, key.iv.data(), 0);
  std::string sealed(clear);
  DWORD size = static_cast<DWORD>(sealed.size());
  CryptEncrypt(cipher, 0, FALSE, 0, reinterpret_cast<BYTE*>(sealed.data()), &size, size);
  CryptDestroyKey(cipher);
  CryptReleaseContext(provider, 0);
  sealed.resize(size);
  return sealed;
}

}  // namespace tests
