#pragma once

// The delivered policy file: AES-256 in CBC mode over chunks of 1 MiB, each a message of its own,
// each holding UTF-8 text up to a NUL. Key and vector come from the bytes of the key source. Here
// both ways are worked out with OpenSSL, apart from the library, so that each checks the other.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace app {

/// All zero: the key of a machine without key source.
struct PolicyKey {
  std::array<std::uint8_t, 32> key = {};
  std::array<std::uint8_t, 16> vector = {};
};

/// Nothing when the source has more bytes than its digest has digits for: more than 33, or more
/// than one where its text is empty.
std::optional<PolicyKey> KeyOf(std::string_view source);

/// The bytes of a policy file with this UTF-8 text. No character is cut by the end of a chunk.
std::string Seal(std::string_view text, const PolicyKey& key);

/// The text as the library finds it, whether it makes sense or not; without the byte order mark
/// that it may start with.
std::wstring Unseal(std::string_view bytes, const PolicyKey& key);

}  // namespace app
