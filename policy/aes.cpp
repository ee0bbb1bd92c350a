#include "policy/aes.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

// The inverse cipher of FIPS 197 in its equivalent form (5.3.5): the rounds use the decryption key
// schedule with the column mixing applied to it, and one table look-up does the substitution and
// the mixing of one byte. A column is one word, its row 0 in the low byte.

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

using Table = std::array<Word, 256>;

/// What a byte of row `row` adds to its column when the columns are mixed back.
constexpr std::array<Table, 4> MakeMixTables() {
  std::array<Table, 4> tables = {};
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

constexpr std::array<Table, 4> kMix = MakeMixTables();

/// The same for a byte that still has to be substituted back.
constexpr std::array<Table, 4> MakeRoundTables() {
  std::array<Table, 4> tables = {};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t value = 0; value < 256; ++value)
      tables[row][value] = kMix[row][kInverseSbox[value]];
  }
  return tables;
}

constexpr std::array<Table, 4> kRound = MakeRoundTables();

constexpr Byte RowOf(Word column, int row) {
  return static_cast<Byte>(column >> (8 * row));
}

Word LoadWord(const Byte* bytes) {
  return static_cast<Word>(bytes[0]) | static_cast<Word>(bytes[1]) << 8 |
         static_cast<Word>(bytes[2]) << 16 | static_cast<Word>(bytes[3]) << 24;
}

void StoreWord(Word word, Byte* bytes) {
  for (int row = 0; row < 4; ++row) bytes[row] = RowOf(word, row);
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

/// The rounds of a context, or 0 when it has no key.
std::size_t RoundsOf(const AesContext& context) {
  const std::size_t mark = context.roundsMark;
  return mark == 160 || mark == 192 || mark == 224 ? mark / 16 : 0;
}

/// Decrypts `Count` independent blocks side by side: their look-ups overlap in the processor, where
/// those of one block wait for each other from round to round.
template <std::size_t Count>
inline void DecryptBlocks(Word (&state)[Count][kColumns], const Word* keys, std::size_t rounds) {
  for (auto& block : state) {
    for (std::size_t column = 0; column < kColumns; ++column) block[column] ^= keys[column];
  }
  for (std::size_t round = 1; round < rounds; ++round) {
    keys += kColumns;
    for (auto& s : state) {
      const Word c0 = kRound[0][RowOf(s[0], 0)] ^ kRound[1][RowOf(s[3], 1)] ^
                      kRound[2][RowOf(s[2], 2)] ^ kRound[3][RowOf(s[1], 3)] ^ keys[0];
      const Word c1 = kRound[0][RowOf(s[1], 0)] ^ kRound[1][RowOf(s[0], 1)] ^
                      kRound[2][RowOf(s[3], 2)] ^ kRound[3][RowOf(s[2], 3)] ^ keys[1];
      const Word c2 = kRound[0][RowOf(s[2], 0)] ^ kRound[1][RowOf(s[1], 1)] ^
                      kRound[2][RowOf(s[0], 2)] ^ kRound[3][RowOf(s[3], 3)] ^ keys[2];
      const Word c3 = kRound[0][RowOf(s[3], 0)] ^ kRound[1][RowOf(s[2], 1)] ^
                      kRound[2][RowOf(s[1], 2)] ^ kRound[3][RowOf(s[0], 3)] ^ keys[3];
      s[0] = c0;
      s[1] = c1;
      s[2] = c2;
      s[3] = c3;
    }
  }
  keys += kColumns;
  for (auto& block : state) {
    Word last[kColumns];
    for (std::size_t column = 0; column < kColumns; ++column) {
      Word word = 0;
      for (std::size_t row = 0; row < 4; ++row) {
        const Word source = block[(column + kColumns - row) % kColumns];
        word |= static_cast<Word>(kInverseSbox[RowOf(source, static_cast<int>(row))]) << (8 * row);
      }
      last[column] = word ^ keys[column];
    }
    std::memcpy(block, last, sizeof(last));
  }
}

/// Decrypts `Count` blocks of a chain whose block before them is `iv`, which becomes their last
/// one.
template <std::size_t Count>
inline void DecryptChained(const Byte* input, Byte* output, Byte* iv, const AesContext& context,
                           std::size_t rounds) {
  Word cipher[Count][kColumns];
  Word state[Count][kColumns];
  for (std::size_t block = 0; block < Count; ++block) {
    for (std::size_t column = 0; column < kColumns; ++column)
      cipher[block][column] = LoadWord(input + block * kBlockSize + column * 4);
  }
  std::memcpy(state, cipher, sizeof(state));
  DecryptBlocks(state, context.roundKeys, rounds);
  for (std::size_t block = 0; block < Count; ++block) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      const Word before = block == 0 ? LoadWord(iv + column * 4) : cipher[block - 1][column];
      StoreWord(state[block][column] ^ before, output + block * kBlockSize + column * 4);
    }
  }
  for (std::size_t column = 0; column < kColumns; ++column)
    StoreWord(cipher[Count - 1][column], iv + column * 4);
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
  const std::size_t rounds = RoundsOf(*context);
  if (rounds == 0) return 1;
  Byte noChain[kBlockSize] = {};
  DecryptChained<1>(input, output, noChain, *context, rounds);
  return 0;
}

int AesCbcDecrypt(const std::uint8_t* input, std::uint8_t* output, int length, std::uint8_t* iv,
                  const AesContext* context) {
  if (length < 0 || static_cast<std::size_t>(length) % kBlockSize != 0) return 1;
  if (length == 0) return 0;
  const std::size_t rounds = RoundsOf(*context);
  if (rounds == 0) return 1;

  constexpr std::size_t kAtOnce = 2;
  std::size_t blocks = static_cast<std::size_t>(length) / kBlockSize;
  for (; blocks >= kAtOnce; blocks -= kAtOnce) {
    DecryptChained<kAtOnce>(input, output, iv, *context, rounds);
    input += kAtOnce * kBlockSize;
    output += kAtOnce * kBlockSize;
  }
  if (blocks != 0) DecryptChained<1>(input, output, iv, *context, rounds);
  return 0;
}
