#include <openssl/evp.h>

#include <memory>

#include "tests/support/seal.h"

namespace tests {

std::string Seal(std::string_view clear, const Key& key) {
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                           EVP_CIPHER_CTX_free);
  EVP_EncryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, key.key.data(), key.iv.data());
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  std::string sealed(clear.size() + 16, '\0');
  int size = 0;
  EVP_EncryptUpdate(context.get(), reinterpret_cast<unsigned char*>(sealed.data()), &size,
                    reinterpret_cast<const unsigned char*>(clear.data()),
                    static_cast<int>(clear.size()));
  sealed.resize(static_cast<std::size_t>(size));
  return sealed;
}

}  // namespace tests
