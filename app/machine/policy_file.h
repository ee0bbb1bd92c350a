#pragma once

// A policy as the passes read it, and as a sealed file. The library's own cipher gives the key and
// opens files; the system's AES (OpenSSL's on Linux) seals them, so that each checks the other.

#include <optional>

#include "app/machine/home.h"
#include "platform/mfc.h"

namespace app {

/// The policy by whose scope set and release go.
inline constexpr int kSwitchingPolicy = 1;

struct PolicyText {
  std::string refusal;     ///< Why the passes refuse the text; empty when they don't.
  bool hasPolicy = false;  ///< There is a policy of the number.
  std::optional<std::wstring> scope =
      {};                  ///< The text of its PrinterScope; nothing where it has none.
  std::size_t listed = 0;  ///< How many element IDs it lists.
};

/// Reads the policy of that number. Throws nothing: a failure of the XML service is a refusal.
PolicyText ReadPolicy(const std::wstring& text, int policyId = kSwitchingPolicy);

/// Returns where a scope switches the watermarks on.
std::string ScopeMeaning(int scope);

/// What the key comes of on this machine.
struct KeyState {
  std::string source;    ///< The state of the key source, for people.
  bool isThere = false;  ///< It has a byte at least; without one the key is all zero.
  bool gives = false;    ///< A key comes of it. If not, every pass that needs one fails.
};
KeyState ExamineKey();

struct PolicyKey {
  CByteArray key;
  CByteArray vector;
};
/// False when no key comes of the key source.
bool FindKey(PolicyKey& key);

inline constexpr std::size_t kCipherBlock = 16;
/// Returns a message of whole blocks under AES-256 in CBC mode (FIPS 197, SP 800-38A).
std::string Encrypt(std::string_view message, const PolicyKey& key);

/// The bytes of a policy file with this UTF-8 text, under the machine's key, which must be given.
/// No character is cut by the end of a chunk.
std::string SealText(std::string_view text);

/// A policy file that has been opened.
struct Unsealed {
  std::wstring text;  ///< Without its byte order mark; it may be no policy.
  std::size_t size;   ///< The file's bytes.
  PolicyText policy;  ///< Of kSwitchingPolicy.
  /// The text is empty, or refused and has ill-formed characters: the file was sealed with another
  /// key.
  bool isNoise;
};

/// Opens and reads a policy file. `path` is a path of Windows or a whole path of the host. Returns
/// null when there is no such file. Throws std::runtime_error with the reason when the file cannot
/// be read or has more than kGreatestSealedPolicy bytes. The machine's key must be there.
std::optional<Unsealed> Unseal(const std::wstring& path);

/// A policy's text, and how it is named to people.
struct PolicySource {
  std::wstring text;
  std::string name;
};

/// Returns the policy of a sealed file; an empty name stands for the delivered policy. Throws
/// UsageError, which names the file or the key source, when no text comes of it.
PolicySource ReadSealed(const std::string& file);

/// The same of a file that is text or sealed, and of standard input, "-", which must be text.
PolicySource ReadPolicySource(const std::string& file);

/// Returns the SHA-256 (FIPS 180-4) of the text in UTF-8, in hexadecimal digits. It is the same for
/// a text and for the policy file made of it.
std::string ChecksumOf(const std::wstring& text);

/// What is said of noise, with the step against it.
inline const std::string kOtherKey =
    std::string("not sealed with this machine's key source, or damaged; ") + kMendKey;

}  // namespace app
