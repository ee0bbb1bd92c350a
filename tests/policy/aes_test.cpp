#include "policy/aes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return bytes;
}

// SP 800-38A, F.2.
TEST(Aes, DecryptsTheChainsOfTheStandard) {
  const Bytes plain = FromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51");
  const std::pair<const char*, const char*> examples[] = {
      {"2b7e151628aed2a6abf7158809cf4f3c",
       "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"},
      {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
       "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"},
      {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
       "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"}};
  for (const auto& [keyHex, cipherHex] : examples) {
    const Bytes key = FromHex(keyHex), cipher = FromHex(cipherHex);
    for (const std::size_t length : {key.size(), key.size() * 8}) {
      AesContext context = {};
      ASSERT_EQ(AesSetDecryptKey(key.data(), static_cast<int>(length), &context), 0);
      Bytes iv = FromHex("000102030405060708090a0b0c0d0e0f"), output(32);
      EXPECT_EQ(AesCbcDecrypt(cipher.data(), output.data(), 32, iv.data(), &context), 0);
      EXPECT_EQ(output, plain);
      EXPECT_EQ(iv, Bytes(cipher.end() - 16, cipher.end()));
    }
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
