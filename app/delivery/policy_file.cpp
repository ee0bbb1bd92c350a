#include "app/delivery/policy_file.h"

#include <openssl/evp.h>

#include <algorithm>
#include <stdexcept>

#include "app/client.h"
#include "app/input_file.h"
#include "platform/owner.h"
#include "platform/posix/machine/machine.h"
#include "policy/policy_file_cipher.h"

namespace app {
namespace {

constexpr std::size_t kChunk = CPolicyFileCipher::kChunkSize;
constexpr std::size_t kBlock = 16;

struct Key {
  CByteArray key;
  CByteArray vector;
};

/// False when no key comes of the key source.
bool FindKey(Key& key) {
  try {
    CPolicyFileCipher().BuildKey(key.key, key.vector);
    return true;
  } catch (const CException&) {
    return false;
  }
}

void Check(int result) {
  if (result != 1) throw std::runtime_error("OpenSSL refuses its work");
}

/// One message; its length is a multiple of a block's.
std::string Encrypt(std::string_view message, Key& key) {
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

KeyState ExamineKey() {
  KeyState state;
  try {
    const auto source = ReadInput(platform::HostPath(KeySource()), kGreatestKeySource);
    state.isThere = source && !source->empty();
    state.source = source ? std::to_string(source->size()) + " bytes" : "missing";
  } catch (const std::runtime_error& error) {
    state.source = std::string("unreadable: ") + error.what();
  }
  Key key;
  state.gives = FindKey(key);
  if (!state.gives)
    state.source += "; no key comes of it: more than its digest has digits for, at most 33";
  else if (!state.isThere)
    state.source += "; the key is all zero then";
  return state;
}

std::string Seal(std::string_view text) {
  Key key;
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

std::optional<Unsealed> Unseal(const std::wstring& path) {
  const auto bytes = ReadInput(platform::HostPath(path), kGreatestSealedPolicy);
  if (!bytes) return std::nullopt;
  CString text;
  if (CPolicyFileCipher().DecryptFile(path.c_str(), text) != 0)
    throw std::runtime_error("it cannot be opened");
  std::wstring clear = text.GetString();
  if (clear.starts_with(L'\uFEFF')) clear.erase(0, 1);
  return Unsealed{std::move(clear), bytes->size()};
}

}  // namespace app
