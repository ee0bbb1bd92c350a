#include <openssl/evp.h>

#include <algorithm>
#include <stdexcept>

#include "app/machine/policy_file.h"
#include "app/text/wording.h"
#include "platform/owner.h"
#include "platform/utf.h"
#include "policy/policy_file_cipher.h"

namespace app {
namespace {

constexpr std::size_t kChunk = CPolicyFileCipher::kChunkSize;
constexpr std::size_t kBlock = 16;

void Check(int result) {
  if (result != 1) throw std::runtime_error("OpenSSL refuses its work");
}

/// One message; its length is a multiple of a block's.
std::string Encrypt(std::string_view message, PolicyKey& key) {
  const Owner<EVP_CIPHER_CTX*, EVP_CIPHER_CTX_free> context(EVP_CIPHER_CTX_new());
  Check(EVP_EncryptInit_ex(context.Get(), EVP_aes_256_cbc(), nullptr, key.key.GetData(),
                           key.vector.GetData()));
  Check(EVP_CIPHER_CTX_set_padding(context.Get(), 0));
  std::string result(message.size() + kBlock, '\0');
  int size = 0;
  Check(EVP_EncryptUpdate(context.Get(), reinterpret_cast<unsigned char*>(result.data()), &size,
                          reinterpret_cast<const unsigned char*>(message.data()),
                          static_cast<int>(message.size())));
  result.resize(static_cast<std::size_t>(size));
  return result;
}

bool IsInsideCharacter(std::string_view text, std::size_t place) {
  return place < text.size() && (text[place] & 0xC0) == 0x80;
}

}  // namespace

std::string SealText(std::string_view text) {
  PolicyKey key;
  if (!FindKey(key)) throw std::logic_error("sealing without a key");
  std::string sealed;
  do {
    // One byte less than a chunk leaves room for the NUL.
    std::size_t length = std::min(text.size(), kChunk - 1);
    while (IsInsideCharacter(text, length)) --length;
    std::string clear(text.substr(0, length));
    text.remove_prefix(length);
    clear.resize(text.empty() ? (length / kBlock + 1) * kBlock : kChunk);
    sealed += Encrypt(clear, key);
  } while (!text.empty());
  return sealed;
}

std::string ChecksumOf(const std::wstring& text) {
  const std::string bytes = platform::ToUtf8(text);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  Check(EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_sha256(), nullptr));
  return Hexadecimal({digest, size});
}

}  // namespace app
