#include <openssl/evp.h>

#include <stdexcept>

#include "app/machine/policy_file.h"
#include "app/text/wording.h"
#include "platform/utf.h"

namespace app {
namespace {

void Check(int result) {
  if (result != 1) throw std::runtime_error("OpenSSL refuses its work");
}

}  // namespace

std::string Encrypt(std::string_view message, const PolicyKey& key) {
  const Owner<EVP_CIPHER_CTX*, EVP_CIPHER_CTX_free> context(EVP_CIPHER_CTX_new());
  Check(EVP_EncryptInit_ex(context.Get(), EVP_aes_256_cbc(), nullptr, key.key.GetData(),
                           key.vector.GetData()));
  Check(EVP_CIPHER_CTX_set_padding(context.Get(), 0));
  std::string result(message.size() + kCipherBlock, '\0');
  int size = 0;
  Check(EVP_EncryptUpdate(context.Get(), reinterpret_cast<unsigned char*>(result.data()), &size,
                          reinterpret_cast<const unsigned char*>(message.data()),
                          static_cast<int>(message.size())));
  result.resize(static_cast<std::size_t>(size));
  return result;
}

std::string ChecksumOf(const std::wstring& text) {
  const std::string bytes = platform::ToUtf8(text);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  Check(EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_sha256(), nullptr));
  return Hexadecimal({digest, size});
}

}  // namespace app
