#include "app/machine/policy_file.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "app/machine/client.h"
#include "app/machine/home.h"
#include "app/text/errors.h"
#include "app/text/input.h"
#include "platform/utf.h"
#include "policy/policy_file_cipher.h"

namespace app {
namespace {

constexpr std::size_t kChunk = CPolicyFileCipher::kChunkSize;

bool IsInsideCharacter(std::string_view text, std::size_t place) {
  return place < text.size() && (text[place] & 0xC0) == 0x80;
}

}  // namespace

bool FindKey(PolicyKey& key) {
  try {
    CPolicyFileCipher().BuildKey(key.key, key.vector);
    return true;
  } catch (const CException&) {
    return false;
  }
}

KeyState ExamineKey() {
  KeyState state;
  try {
    const auto source = ReadInput(HostPath(KeySource()), kGreatestKeySource);
    state.isThere = source && !source->empty();
    state.source = source ? std::to_string(source->size()) + " bytes" : "missing";
    const auto isAscii = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (source && !kMachineIsFolder && !std::ranges::all_of(*source, isAscii))
      state.source += "; not all ASCII, so a host with another ANSI code page makes another key";
  } catch (const std::runtime_error& error) {
    state.source = std::string("unreadable: ") + error.what();
  }
  PolicyKey key;
  state.gives = FindKey(key);
  if (!state.gives)
    state.source += "; no key comes of it, since 33 are the most";
  else if (!state.isThere)
    state.source += "; the key is all zero then";
  return state;
}

std::optional<Unsealed> Unseal(const std::wstring& path) {
  const auto bytes = ReadInput(HostPath(path), kGreatestSealedPolicy);
  if (!bytes) return std::nullopt;
  CString text;
  if (CPolicyFileCipher().DecryptFile(path.c_str(), text) != 0)
    throw std::runtime_error("it cannot be opened");
  std::wstring clear = text.GetString();
  if (clear.starts_with(L'\uFEFF')) clear.erase(0, 1);
  return Unsealed{std::move(clear), bytes->size()};
}

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
    clear.resize(text.empty() ? (length / kCipherBlock + 1) * kCipherBlock : kChunk);
    sealed += Encrypt(clear, key);
  } while (!text.empty());
  return sealed;
}

bool IsNoise(const std::wstring& text, const PolicyText& policy) {
  return text.empty() || (!policy.refusal.empty() && text.find(L'\uFFFD') != std::wstring::npos);
}

std::wstring ReadSealed(const std::wstring& path, const std::string& name) {
  const KeyState key = ExamineKey();
  if (!key.gives) throw UsageError(HostPath(KeySource()).string() + ": " + key.source);
  std::optional<Unsealed> unsealed;
  try {
    unsealed = Unseal(path);
  } catch (const std::runtime_error& error) {
    throw UsageError(name + ": " + error.what());
  }
  if (!unsealed) throw UsageError(name + ": no such file; " + kMendMissing);
  if (IsNoise(unsealed->text, ReadPolicy(unsealed->text))) {
    const auto bytes = ReadInput(HostPath(path), kGreatestSealedPolicy);
    const bool isText = bytes && DecodeText(*bytes);
    throw UsageError(
        name + ": " +
        (isText ? "it is text, not a sealed file" : std::string(kOtherKey) + "; " + kMendKey));
  }
  return std::move(unsealed->text);
}

PolicySource ReadPolicySource(const std::string& file) {
  if (file.empty()) {
    const std::wstring path = FindDeliveryFolder().PolicyFile();
    const std::string name = HostPath(path).string();
    return {ReadSealed(path, name), name};
  }
  const std::string bytes = ReadBytes(file);
  if (auto text = DecodeText(bytes)) return {std::move(*text), NameOf(file)};
  const bool isSealed = bytes.size() % kCipherBlock == 0 && !bytes.starts_with('<');
  if (!isSealed) throw UsageError(NameOf(file) + ": " + WhyNoText(bytes));
  const std::filesystem::path path = std::filesystem::absolute(PathOf(file));
  return {ReadSealed(platform::FromUtf8(path.string()), file), file};
}

}  // namespace app
