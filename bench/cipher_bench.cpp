// The cipher beside OpenSSL's table-driven one, and the policy file's road beside the cipher alone.

#define OPENSSL_SUPPRESS_DEPRECATED
#include <benchmark/benchmark.h>
#include <openssl/aes.h>

#include <random>
#include <vector>

#include "bench/machine.h"
#include "policy/aes.h"
#include "policy/policy_file_cipher.h"

namespace {

constexpr std::size_t kMessage = 16 << 20;
constexpr std::size_t kChunk = 1 << 20;
constexpr std::size_t kChunks = 64;
constexpr std::uint8_t kKey[32] = {1, 2, 3};

std::vector<std::uint8_t> Noise(std::size_t size) {
  std::mt19937 random(1);
  std::vector<std::uint8_t> bytes(size);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  return bytes;
}

void CountBytes(benchmark::State& state, std::size_t each) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * each));
}

void DecryptCbc(benchmark::State& state) {
  const auto input = Noise(kMessage);
  std::vector<std::uint8_t> output(kMessage);
  AesContext context;
  AesSetDecryptKey(kKey, 32, &context);
  for (auto _ : state) {
    std::uint8_t iv[16] = {};
    AesCbcDecrypt(input.data(), output.data(), static_cast<int>(kMessage), iv, &context);
    benchmark::DoNotOptimize(output.data());
  }
  CountBytes(state, kMessage);
}
BENCHMARK(DecryptCbc)->Unit(benchmark::kMillisecond);

void DecryptCbcOpenSsl(benchmark::State& state) {
  const auto input = Noise(kMessage);
  std::vector<std::uint8_t> output(kMessage);
  AES_KEY key;
  AES_set_decrypt_key(kKey, 256, &key);
  for (auto _ : state) {
    std::uint8_t iv[16] = {};
    AES_cbc_encrypt(input.data(), output.data(), kMessage, &key, iv, AES_DECRYPT);
    benchmark::DoNotOptimize(output.data());
  }
  CountBytes(state, kMessage);
}
BENCHMARK(DecryptCbcOpenSsl)->Unit(benchmark::kMillisecond);

/// Chunks full of text, so that nothing of the road is saved, into a text that has its room: what a
/// system takes to hand out memory is its own affair.
void DecryptPolicyFile(benchmark::State& state) {
  const bench::Machine machine("");
  std::string clear(kChunk, 'x');
  clear.back() = '\0';
  std::string sealed(kChunk, '\0');
  AES_KEY key;
  const std::uint8_t noKey[32] = {};
  std::uint8_t iv[16] = {};
  AES_set_encrypt_key(noKey, 256, &key);
  AES_cbc_encrypt(reinterpret_cast<const std::uint8_t*>(clear.data()),
                  reinterpret_cast<std::uint8_t*>(sealed.data()), kChunk, &key, iv, AES_ENCRYPT);
  std::string file;
  for (std::size_t i = 0; i < kChunks; ++i) file += sealed;
  machine.Write("C/WmPolicy.dat", file);
  CString text;
  CPolicyFileCipher().DecryptFile(L"C:\\WmPolicy.dat", text);
  for (auto _ : state) {
    text.Empty();
    if (CPolicyFileCipher().DecryptFile(L"C:\\WmPolicy.dat", text) != 0 ||
        text.GetLength() != static_cast<int>(kChunks * (kChunk - 1)))
      state.SkipWithError("the file was not decrypted");
  }
  CountBytes(state, kChunks * kChunk);
}
BENCHMARK(DecryptPolicyFile)->Unit(benchmark::kMillisecond);

}  // namespace
