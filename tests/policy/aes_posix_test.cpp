// The cipher against OpenSSL's, on random keys, lengths, alignments and shared buffers, with the
// key's size in bytes or in bits.

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

TEST(Aes, AgreesWithOpenSslOnRandomChains) {
  std::mt19937 random(197);
  const auto draw = [&random](std::size_t size) {
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
  };
  const EVP_CIPHER* const ciphers[] = {EVP_aes_128_cbc(), EVP_aes_192_cbc(), EVP_aes_256_cbc()};
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> openSsl(EVP_CIPHER_CTX_new(),
                                                                           EVP_CIPHER_CTX_free);
  for (int run = 0; run < 600; ++run) {
    SCOPED_TRACE(run);
    const int keySize = 16 + 8 * (run % 3), length = 16 * (1 + static_cast<int>(random() % 40));
    const std::size_t from = random() % 8, to = random() % 2 == 0 ? from : random() % 8;
    const Bytes key = draw(static_cast<std::size_t>(keySize));
    Bytes iv = draw(16), input = draw(static_cast<std::size_t>(length) + 16), output = input;
    Bytes expected(input.size());
    int done = 0;
    EVP_DecryptInit_ex(openSsl.get(), ciphers[run % 3], nullptr, key.data(), iv.data());
    EVP_CIPHER_CTX_set_padding(openSsl.get(), 0);
    EVP_DecryptUpdate(openSsl.get(), expected.data(), &done, &input[from], length);
    ASSERT_EQ(done, length);
    const Bytes lastBlock(&input[from] + length - 16, &input[from] + length);

    AesContext context = {};
    ASSERT_EQ(AesSetDecryptKey(key.data(), run % 2 == 0 ? keySize : 8 * keySize, &context), 0);
    std::uint8_t* const target = from == to ? &input[from] : &output[to];
    Bytes block(16);
    ASSERT_EQ(AesDecryptBlock(&input[from], block.data(), &context), 0);
    for (std::size_t i = 0; i < block.size(); ++i) ASSERT_EQ(block[i] ^ iv[i], expected[i]);
    ASSERT_EQ(AesCbcDecrypt(&input[from], target, length, iv.data(), &context), 0);
    ASSERT_TRUE(std::equal(target, target + length, expected.begin()));
    ASSERT_EQ(iv, lastBlock);
  }
}

TEST(Aes, RefusesWhatItCannotDo) {
  AesContext context;
  std::memset(&context, 0x5A, sizeof(context));
  const AesContext before = context;
  const Bytes key(32), input(32, 0x11);
  for (const int length : {0, -16, 15, 33, 64, 255})
    EXPECT_EQ(AesSetDecryptKey(key.data(), length, &context), 1) << length;
  EXPECT_EQ(std::memcmp(&context, &before, sizeof(context)), 0);

  const auto decrypt = [&](int length) {
    Bytes output(32, 0x22), iv(16, 0x33);
    const int result = AesCbcDecrypt(input.data(), output.data(), length, iv.data(), &context);
    EXPECT_EQ(output, Bytes(32, 0x22)) << length;
    EXPECT_EQ(iv, Bytes(16, 0x33)) << length;
    return result;
  };
  EXPECT_EQ(decrypt(16), 1) << "no key";
  ASSERT_EQ(AesSetDecryptKey(key.data(), 32, &context), 0);
  for (const int length : {15, 17, -16}) EXPECT_EQ(decrypt(length), 1);
  EXPECT_EQ(decrypt(0), 0);
}

}  // namespace
