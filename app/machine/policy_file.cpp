#include "app/machine/policy_file.h"

#include <stdexcept>

#include "app/machine/client.h"
#include "app/machine/home.h"
#include "app/text/input.h"
#include "policy/policy_file_cipher.h"

namespace app {

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
  } catch (const std::runtime_error& error) {
    state.source = std::string("unreadable: ") + error.what();
  }
  PolicyKey key;
  state.gives = FindKey(key);
  if (!state.gives)
    state.source += "; no key comes of it: more than its digest has digits for, at most 33";
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

bool IsNoise(const std::wstring& text, const PolicyText& policy) {
  return text.empty() || (!policy.refusal.empty() && text.find(L'\uFFFD') != std::wstring::npos);
}

}  // namespace app
