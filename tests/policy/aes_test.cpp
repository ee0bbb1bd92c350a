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

// FIPS 197, appendix C.
TEST(Aes, DecryptsTheExamplesOfTheStandard) {
  const Bytes plain = FromHex("00112233445566778899aabbccddeeff");
  const Bytes key = FromHex("000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f");
  const std::pair<int, const char*> examples[] = {{16, "69c4e0d86a7b0430d8cdb78070b4c55a"},
                                                  {24, "dda97ca4864cdfe06eaf70a0ec0d7191"},
                                                  {32, "8ea2b7ca516745bfeafc49904b496089"}};
  for (const auto& [size, cipher] : examples) {
    for (const int length : {size, size * 8}) {
      AesContext context = {};
      ASSERT_EQ(AesSetDecryptKey(key.data(), length, &context), 0);
      Bytes block = FromHex(cipher);
      EXPECT_EQ(AesDecryptBlock(block.data(), block.data(), &context), 0);
      EXPECT_EQ(block, plain) << length;
    }
  }
}

// SP 800-38A, F.2.
TEST(Aes, DecryptsTheChainsOfTheStandard) {
  const Bytes plain = FromHex(
      "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
      "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
  const std::pair<const char*, const char*> examples[] = {
      {"2b7e151628aed2a6abf7158809cf4f3c",
       "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
       "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
      {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
       "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
       "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
      {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
       "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
       "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"}};
  for (const auto& [keyHex, cipherHex] : examples) {
    const Bytes key = FromHex(keyHex), cipher = FromHex(cipherHex);
    AesContext context = {};
    ASSERT_EQ(AesSetDecryptKey(key.data(), static_cast<int>(key.size()), &context), 0);
    Bytes iv = FromHex("000102030405060708090a0b0c0d0e0f"), output(64);
    EXPECT_EQ(AesCbcDecrypt(cipher.data(), output.data(), 64, iv.data(), &context), 0);
    EXPECT_EQ(output, plain);
    EXPECT_EQ(iv, Bytes(cipher.end() - 16, cipher.end()));
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
