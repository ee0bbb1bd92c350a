#include "app/policy_file.h"

#include <openssl/evp.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "platform/posix/ansi.h"
#include "platform/utf.h"

namespace app {
namespace {

constexpr std::size_t kChunk = 0x100000;
constexpr std::size_t kBlock = 16;

void Check(int result) {
  if (result != 1) throw std::runtime_error("OpenSSL refuses its work");
}

const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Md5Digits(std::string_view bytes) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  Check(EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_md5(), nullptr));
  std::string digits;
  for (unsigned i = 0; i < size; ++i) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02X", digest[i]);
    digits += pair;
  }
  return digits;
}

/// The digest takes as many bytes of the ANSI text as the text has UTF-16 units, so that
/// double-byte text goes in cut short.
std::string DigitsOf(std::string_view source) {
  const std::wstring text = platform::FromAnsi(source.substr(0, source.find('\0')));
  const std::string hashed = platform::ToAnsi(text).substr(0, text.size());
  return hashed.empty() ? "" : Md5Digits(hashed);
}

template <std::size_t size>
void Fold(std::string_view material, std::array<std::uint8_t, size>& target) {
  for (std::size_t i = 0; i < material.size(); ++i)
    target[i % size] = static_cast<std::uint8_t>(target[i % size] ^ material[i]);
}

enum class Way { kDecrypt = 0, kEncrypt = 1 };

/// One message; its length is a multiple of a block's.
std::string Crypt(std::string_view message, const PolicyKey& key, Way way) {
  const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> context(EVP_CIPHER_CTX_new(),
                                                                           EVP_CIPHER_CTX_free);
  Check(EVP_CipherInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, key.key.data(),
                          key.vector.data(), static_cast<int>(way)));
  Check(EVP_CIPHER_CTX_set_padding(context.get(), 0));
  std::string result(message.size() + kBlock, '\0');
  int size = 0;
  Check(EVP_CipherUpdate(context.get(), reinterpret_cast<unsigned char*>(result.data()), &size,
                         BytesOf(message), static_cast<int>(message.size())));
  result.resize(static_cast<std::size_t>(size));
  return result;
}

bool IsInsideCharacter(std::string_view text, std::size_t place) {
  return place < text.size() && (text[place] & 0xC0) == 0x80;
}

}  // namespace

std::optional<PolicyKey> KeyOf(std::string_view source) {
  const std::string digits = DigitsOf(source) + '\0';
  if (source.size() > digits.size()) return std::nullopt;
  std::string material(source.size(), '\0');
  std::size_t taken = 0;
  for (const std::size_t first : {0U, 1U})
    for (std::size_t i = first; i < material.size(); i += 2) material[i] = digits[taken++];
  PolicyKey key;
  Fold(material, key.key);
  Fold(material, key.vector);
  return key;
}

std::string Seal(std::string_view text, const PolicyKey& key) {
  std::string sealed;
  do {
    // One byte less than a chunk leaves room for the NUL.
    std::size_t length = std::min(text.size(), kChunk - 1);
    while (IsInsideCharacter(text, length)) --length;
    std::string clear(text.substr(0, length));
    text.remove_prefix(length);
    clear.resize(text.empty() ? (length / kBlock + 1) * kBlock : kChunk);
    sealed += Crypt(clear, key, Way::kEncrypt);
  } while (!text.empty());
  return sealed;
}

std::wstring Unseal(std::string_view bytes, const PolicyKey& key) {
  std::wstring text;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kChunk))) {
    std::string message(bytes.substr(0, kChunk));
    message.resize(kChunk);
    const std::string clear = Crypt(message, key, Way::kDecrypt);
    text += platform::FromUtf8(std::string_view(clear).substr(0, clear.find('\0')));
  }
  if (text.starts_with(L'\uFEFF')) text.erase(0, 1);
  return text;
}

}  // namespace app
