#include "policy/aes.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

// The inverse cipher of FIPS 197 in its equivalent form (5.3.5): the rounds use the decryption key
// schedule with the column mixing applied to it, and one table look-up does the substitution and
// the mixing of one byte. A column is one word, its row 0 in the low byte, so that a block is four
// words as they lie in memory.

namespace {

using Word = std::uint32_t;
using Byte = std::uint8_t;

constexpr std::size_t kBlockSize = 16;
constexpr std::size_t kColumns = 4;

// Arithmetic in the field of FIPS 197, 4.2.

constexpr Byte Double(Byte value) {
  return static_cast<Byte>((value << 1) ^ ((value & 0x80) != 0 ? 0x1B : 0));
}

constexpr Byte Multiply(Byte left, Byte right) {
  Byte product = 0;
  for (; right != 0; right = static_cast<Byte>(right >> 1), left = Double(left)) {
    if ((right & 1) != 0) product = static_cast<Byte>(product ^ left);
  }
  return product;
}

constexpr Byte Affine(Byte value) {
  return static_cast<Byte>(value ^ std::rotl(value, 1) ^ std::rotl(value, 2) ^ std::rotl(value, 3) ^
                           std::rotl(value, 4) ^ 0x63);
}

// 3 generates the field: powers of 3 and of its inverse, 0xF6, pair each value with its inverse.
constexpr std::array<Byte, 256> MakeSbox() {
  std::array<Byte, 256> sbox = {};
  Byte value = 1;
  Byte inverse = 1;
  do {
    sbox[value] = Affine(inverse);
    value = Multiply(value, 0x03);
    inverse = Multiply(inverse, 0xF6);
  } while (value != 1);
  sbox[0] = Affine(0);
  return sbox;
}

constexpr std::array<Byte, 256> kSbox = MakeSbox();

constexpr std::array<Byte, 256> MakeInverseSbox() {
  std::array<Byte, 256> inverse = {};
  for (std::size_t value = 0; value < 256; ++value)
    inverse[kSbox[value]] = static_cast<Byte>(value);
  return inverse;
}

constexpr std::array<Byte, 256> kInverseSbox = MakeInverseSbox();

/// Table [row][value]: the word that a byte `value` in `row` contributes to its column.
using Tables = std::array<std::array<Word, 256>, 4>;

/// The contributions under the inverse column mixing.
constexpr Tables MakeMixTables() {
  Tables tables = {};
  for (std::size_t value = 0; value < 256; ++value) {
    const Byte byte = static_cast<Byte>(value);
    const Word column = static_cast<Word>(Multiply(byte, 0x0E)) |
                        static_cast<Word>(Multiply(byte, 0x09)) << 8 |
                        static_cast<Word>(Multiply(byte, 0x0D)) << 16 |
                        static_cast<Word>(Multiply(byte, 0x0B)) << 24;
    for (int row = 0; row < 4; ++row)
      tables[static_cast<std::size_t>(row)][value] = std::rotl(column, 8 * row);
  }
  return tables;
}

constexpr Tables kMix = MakeMixTables();

/// Inverse substitution followed by the inverse column mixing, in one look-up.
constexpr Tables MakeRoundTables() {
  Tables tables = {};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t value = 0; value < 256; ++value)
      tables[row][value] = kMix[row][kInverseSbox[value]];
  }
  return tables;
}

constexpr Tables kRound = MakeRoundTables();

/// The last round only substitutes; each byte stays in its row.
constexpr Tables MakeLastTables() {
  Tables tables = {};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t value = 0; value < 256; ++value)
      tables[row][value] = static_cast<Word>(kInverseSbox[value]) << (8 * row);
  }
  return tables;
}

constexpr Tables kLast = MakeLastTables();

constexpr Byte RowOf(Word column, int row) {
  return static_cast<Byte>(column >> (8 * row));
}

// The words of a block are read and written as they lie in memory.
static_assert(std::endian::native == std::endian::little);

Word LoadWord(const Byte* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// The four columns of a block.
struct Block {
  Word column[kColumns];
};

Block LoadBlock(const Byte* bytes) {
  Block block;
  std::memcpy(&block, bytes, kBlockSize);
  return block;
}

void StoreBlock(const Block& block, Byte* bytes) {
  std::memcpy(bytes, &block, kBlockSize);
}

Block operator^(const Block& left, const Block& right) {
  Block both;
  for (std::size_t i = 0; i < kColumns; ++i) both.column[i] = left.column[i] ^ right.column[i];
  return both;
}

Word SubstituteWord(Word word) {
  return static_cast<Word>(kSbox[RowOf(word, 0)]) | static_cast<Word>(kSbox[RowOf(word, 1)]) << 8 |
         static_cast<Word>(kSbox[RowOf(word, 2)]) << 16 |
         static_cast<Word>(kSbox[RowOf(word, 3)]) << 24;
}

Word MixBack(Word word) {
  return kMix[0][RowOf(word, 0)] ^ kMix[1][RowOf(word, 1)] ^ kMix[2][RowOf(word, 2)] ^
         kMix[3][RowOf(word, 3)];
}

/// The round keys of a context, from the first up to the last one; null when it has no key.
struct RoundKeys {
  explicit RoundKeys(const AesContext& context) {
    const std::size_t mark = context.roundsMark;
    if (mark != 160 && mark != 192 && mark != 224) return;
    first = context.roundKeys;
    last = first + mark / 16 * kColumns;
  }

  const Word* first = nullptr;
  const Word* last = nullptr;
};

/// One round. Shifting the rows back brings each byte of a column from another column.
inline Block Round(const Tables& of, const Block& block, const Word* key) {
  const auto [a, b, c, d] = block.column;
  return {
      of[0][RowOf(a, 0)] ^ of[1][RowOf(d, 1)] ^ of[2][RowOf(c, 2)] ^ of[3][RowOf(b, 3)] ^ key[0],
      of[0][RowOf(b, 0)] ^ of[1][RowOf(a, 1)] ^ of[2][RowOf(d, 2)] ^ of[3][RowOf(c, 3)] ^ key[1],
      of[0][RowOf(c, 0)] ^ of[1][RowOf(b, 1)] ^ of[2][RowOf(a, 2)] ^ of[3][RowOf(d, 3)] ^ key[2],
      of[0][RowOf(d, 0)] ^ of[1][RowOf(c, 1)] ^ of[2][RowOf(b, 2)] ^ of[3][RowOf(a, 3)] ^ key[3]};
}

/// Decrypts `Count` blocks side by side: their look-ups overlap in the processor, where those of
/// one block wait for each other from round to round. `chain` is the cipher block before them and
/// becomes their last one. All input is read before any output is written.
template <std::size_t Count>
inline void DecryptChained(const Byte* input, Byte* output, Block& chain, const RoundKeys& keys) {
  Block cipher[Count];
  Block plain[Count];
  for (std::size_t i = 0; i < Count; ++i) {
    cipher[i] = LoadBlock(input + i * kBlockSize);
    for (std::size_t j = 0; j < kColumns; ++j)
      plain[i].column[j] = cipher[i].column[j] ^ keys.first[j];
  }
  const Word* key = keys.first + kColumns;
  for (; key != keys.last; key += kColumns) {
    for (Block& block : plain) block = Round(kRound, block, key);
  }
  for (Block& block : plain) block = Round(kLast, block, key);
  for (std::size_t i = 0; i < Count; ++i) {
    StoreBlock(plain[i] ^ chain, output + i * kBlockSize);
    chain = cipher[i];
  }
}

}  // namespace

int AesSetDecryptKey(const std::uint8_t* key, int keyLength, AesContext* context) {
  const int bytes =
      keyLength == 128 || keyLength == 192 || keyLength == 256 ? keyLength / 8 : keyLength;
  if (bytes != 16 && bytes != 24 && bytes != 32) return 1;
  const std::size_t keyWords = static_cast<std::size_t>(bytes) / 4;
  const std::size_t rounds = keyWords + 6;
  const std::size_t words = kColumns * (rounds + 1);

  // The schedule of FIPS 197, 5.2.
  Word schedule[60];
  for (std::size_t i = 0; i < keyWords; ++i) schedule[i] = LoadWord(key + 4 * i);
  Byte roundConstant = 1;
  for (std::size_t i = keyWords; i < words; ++i) {
    Word word = schedule[i - 1];
    if (i % keyWords == 0) {
      word = SubstituteWord(std::rotr(word, 8)) ^ roundConstant;
      roundConstant = Double(roundConstant);
    } else if (keyWords > 6 && i % keyWords == 4) {
      word = SubstituteWord(word);
    }
    schedule[i] = schedule[i - keyWords] ^ word;
  }

  // Last round first, all but the outer two mixed back.
  for (std::size_t round = 0; round <= rounds; ++round) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      const Word word = schedule[(rounds - round) * kColumns + column];
      context->roundKeys[round * kColumns + column] =
          round == 0 || round == rounds ? word : MixBack(word);
    }
  }
  context->roundsMark = static_cast<Byte>(rounds * 16);
  return 0;
}

int AesDecryptBlock(const std::uint8_t* input, std::uint8_t* output, const AesContext* context) {
  const RoundKeys keys(*context);
  if (keys.first == nullptr) return 1;
  Block noChain = {};
  DecryptChained<1>(input, output, noChain, keys);
  return 0;
}

int AesCbcDecrypt(const std::uint8_t* input, std::uint8_t* output, int length, std::uint8_t* iv,
                  const AesContext* context) {
  if (length < 0 || static_cast<std::size_t>(length) % kBlockSize != 0) return 1;
  if (length == 0) return 0;
  const RoundKeys keys(*context);
  if (keys.first == nullptr) return 1;

  constexpr std::size_t kAtOnce = 2;
  Block chain = LoadBlock(iv);
  std::size_t blocks = static_cast<std::size_t>(length) / kBlockSize;
  for (; blocks >= kAtOnce; blocks -= kAtOnce) {
    DecryptChained<kAtOnce>(input, output, chain, keys);
    input += kAtOnce * kBlockSize;
    output += kAtOnce * kBlockSize;
  }
  if (blocks != 0) DecryptChained<1>(input, output, chain, keys);
  StoreBlock(chain, iv);
  return 0;
}
