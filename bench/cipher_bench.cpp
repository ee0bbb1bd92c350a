// The cipher beside OpenSSL's table-driven one, and the policy file's road beside the cipher alone.
//
// OpenSSL has two table-driven ways: a compact one, which it takes on a processor that reports
// hyper-threading, and a fast one. The label of its benchmark tells which it is. OPENSSL_ia32cap
// chooses: ~0x10000000 the fast one, 0x10000000 the compact one.

#define OPENSSL_SUPPRESS_DEPRECATED
#include <benchmark/benchmark.h>
#include <openssl/aes.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

#include "bench/machine.h"
#include "policy/aes.h"
#include "policy/policy_file_cipher.h"

namespace {

constexpr std::size_t kMessage = 16 << 20;
constexpr std::size_t kChunk = 1 << 20;
constexpr std::size_t kChunks = 16;
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

/// The processor's cycles a second, by a chain of additions that each take one.
double CyclesPerSecond() {
  using Clock = std::chrono::steady_clock;
  constexpr int kAdditions = 1'000'000;
  double shortest = 1;
  for (int attempt = 0; attempt < 200; ++attempt) {
    const auto start = Clock::now();
    std::uint64_t number = 1;
    for (int i = 0; i < kAdditions / 8; ++i) {
      for (int j = 0; j < 8; ++j) {
        number += number;
        benchmark::DoNotOptimize(number);
      }
    }
    shortest = std::min(shortest, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return kAdditions / shortest;
}

/// Repeats `decrypt` over the message; tells its bytes and the cycles of a block.
template <typename Decrypt>
void RunCipher(benchmark::State& state, const Decrypt& decrypt) {
  static const double cycles = CyclesPerSecond();
  const auto input = Noise(kMessage);
  std::vector<std::uint8_t> output(kMessage);
  const std::clock_t start = std::clock();
  for (auto _ : state) {
    std::uint8_t iv[16] = {};
    decrypt(input.data(), output.data(), iv);
    benchmark::DoNotOptimize(output.data());
  }
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  const double blocks =
      static_cast<double>(state.iterations()) * (static_cast<double>(kMessage) / 16);
  state.counters["cycles/block"] = seconds * cycles / blocks;
  CountBytes(state, kMessage);
}

void DecryptCbc(benchmark::State& state) {
  AesContext context;
  AesSetDecryptKey(kKey, 32, &context);
  RunCipher(state, [&](const std::uint8_t* input, std::uint8_t* output, std::uint8_t* iv) {
    AesCbcDecrypt(input, output, static_cast<int>(kMessage), iv, &context);
  });
}
BENCHMARK(DecryptCbc)->Unit(benchmark::kMillisecond);

void DecryptCbcOpenSsl(benchmark::State& state) {
  AES_KEY key;
  AES_set_decrypt_key(kKey, 256, &key);
  RunCipher(state, [&](const std::uint8_t* input, std::uint8_t* output, std::uint8_t* iv) {
    AES_cbc_encrypt(input, output, kMessage, &key, iv, AES_DECRYPT);
  });
  const char* const way = std::getenv("OPENSSL_ia32cap");
  state.SetLabel(way == nullptr ? "by the processor" : way[0] == '~' ? "fast" : "compact");
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
