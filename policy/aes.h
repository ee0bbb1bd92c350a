#pragma once

// AES (FIPS 197) decryption in CBC mode (SP 800-38A), for keys of 128, 192 and 256 bits. No state
// but the caller's context; buffers need no alignment and may be one and the same.

#include <cstdint>

/// A key made ready for decryption; only read by it.
struct AesContext {
  std::uint32_t roundKeys[60];
  /// The number of rounds times 16: 160, 192 or 224. Any other value marks a context without a key.
  std::uint8_t roundsMark;
};

/// `keyLength` counts bytes (16, 24, 32) or bits (128, 192, 256). 0, or 1 for any other length,
/// which leaves `context` alone.
int AesSetDecryptKey(const std::uint8_t* key, int keyLength, AesContext* context);

/// Decrypts one block of 16 bytes. 0, or 1 for a context without a key, which leaves `output`
/// alone.
int AesDecryptBlock(const std::uint8_t* input, std::uint8_t* output, const AesContext* context);

/// Decrypts `length` bytes, a multiple of 16. `iv` is the initial vector of 16 bytes and becomes
/// the last cipher block of `input`. 0, or 1 for any other length or a context without a key, with
/// nothing done.
int AesCbcDecrypt(const std::uint8_t* input, std::uint8_t* output, int length, std::uint8_t* iv,
                  const AesContext* context);
