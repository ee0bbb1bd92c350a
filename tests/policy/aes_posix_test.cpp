// The cipher against OpenSSL's, on random keys, lengths, alignments and shared buffers.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "policy/aes.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes DecryptWithOpenSsl(const Bytes& key, const Bytes& iv, const std::uint8_t* input, int length) {
  const EVP_CIPHER* cipher = key.size() == 16   ? EVP_aes_128_cbc()
                             : key.size() == 24 ? EVP_aes_192_cbc()
                                                : EVP_aes_256_cbc();
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                           EVP_CIPHER_CTX_free);
  EVP_DecryptInit_ex(context.get(), cipher, nullptr, key.data(), iv.data());
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  Bytes output(static_cast<std::size_t>(length) + 16);
  int done = 0;
  EVP_DecryptUpdate(context.get(), output.data(), &done, input, length);
  output.resize(static_cast<std::size_t>(done));
  return output;
}

TEST(AesOracle, AgreesOnRandomChains) {
  std::mt19937 random(197);
  const auto fill = [&random](Bytes& bytes) {
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
  };
  for (int run = 0; run < 600; ++run) {
    Bytes key(16 + 8 * (random() % 3));
    Bytes iv(16);
    const std::size_t length = 16 * (1 + random() % 40);
    const std::size_t from = random() % 8, to = random() % 2 == 0 ? from : random() % 8;
    Bytes input(length + 16);
    fill(key);
    fill(iv);
    fill(input);
    const Bytes expected =
        DecryptWithOpenSsl(key, iv, input.data() + from, static_cast<int>(length));
    const Bytes lastBlock(&input[from + length - 16], &input[from + length]);

    AesContext context = {};
    ASSERT_EQ(AesSetDecryptKey(key.data(), static_cast<int>(key.size()), &context), 0);
    Bytes output(length + 16);
    std::uint8_t* const target = from == to ? &input[from] : &output[to];
    ASSERT_EQ(AesCbcDecrypt(&input[from], target, static_cast<int>(length), iv.data(), &context),
              0);
    ASSERT_EQ(Bytes(target, target + length), expected) << "run " << run;
    ASSERT_EQ(iv, lastBlock) << "run " << run;
  }
}

}  // namespace
