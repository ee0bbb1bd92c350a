#include "policy/policy_file_cipher.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "platform/crt.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/support/seal.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

using namespace std::string_literals;

constexpr std::size_t kChunk = 0x100000;

/// `text` in as many bytes as there are to be.
std::string Padded(std::string text, std::size_t size) {
  text.resize(size, '\0');
  return text;
}

/// The material that comes of a key source of this size: the digits of its MD5 and their
/// terminator, laid on the even positions first. All digits here are those of `md5sum`.
std::string Material(const std::string& digits, std::size_t size) {
  const std::string taken = digits + '\0';
  std::string material(size, '?');
  std::size_t next = 0;
  for (std::size_t at = 0; at < size; at += 2) material[at] = taken.at(next++);
  for (std::size_t at = 1; at < size; at += 2) material[at] = taken.at(next++);
  return material;
}

class PolicyFileCipher : public testing::Test {
 protected:
  std::string Decrypted(const std::string& file) {
    m_machine.Write(kPolicyFile, file);
    CString text;
    EXPECT_EQ(CPolicyFileCipher().DecryptFile(kPolicyFile, text), 0);
    return platform::ToUtf8(std::wstring_view(text.GetString()));
  }
  /// Whether the key source gives the key of `material`.
  bool Opens(const std::string& source, const std::string& material) {
    m_machine.Write(kKeySource, source);
    return Decrypted(Seal(Padded("text", 16), KeyOf(material))) == "text";
  }

  TestMachine m_machine;
};

TEST_F(PolicyFileCipher, TheKeySourceGivesAsMuchMaterialAsItIsLong) {
  const std::string digitsOfAbc = "900150983CD24FB0D6963F7D28E17F72";
  EXPECT_EQ(Decrypted(SealPolicy("text")), "text") << "no source";
  EXPECT_TRUE(Opens("", ""));
  EXPECT_TRUE(Opens("ab", Material("187EF4436122D1CC2F40DC2B92F0EBA0", 2)));
  for (std::size_t size = 3; size <= 33; ++size)
    EXPECT_TRUE(Opens(Padded("abc", size), Material(digitsOfAbc, size))) << size;
  EXPECT_TRUE(Opens("abc\0xyz"s, Material(digitsOfAbc, 7))) << "nothing behind a NUL is hashed";
  EXPECT_TRUE(Opens("\0"s, "\0"s)) << "an empty text has no digits";
  // Two characters are two units and four bytes: the digest is that of the first two bytes.
  EXPECT_TRUE(Opens("\x93\xFA\x96\x7B", Material("2AE4", 4)));
  EXPECT_FALSE(Opens("another", Material(digitsOfAbc, 7)));
  EXPECT_THROW(Opens("\0\0"s, ""), CInvalidArgException) << "no digits for two bytes";
  for (const std::size_t size : {34U, 2048U, 2049U, 100000U})
    EXPECT_THROW(Opens(std::string(size, 'k'), ""), CInvalidArgException) << size;
}

TEST(FoldBytes, CopiesWhatFitsAndFoldsTheRest) {
  for (const auto& [size, folded] : std::map<INT_PTR, std::string>{
           {0, ""}, {1, "\x9F"}, {2, "\x9D\x9A"}, {3, "\1\2\4"}, {4, "\1\2\4\x98"}}) {
    CByteArray source, target;
    for (const int byte : {1, 2, 4}) source.Add(static_cast<BYTE>(byte));
    for (INT_PTR i = 0; i < size; ++i) target.Add(0x98);
    CPolicyFileCipher::FoldBytes(source, target);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(target.GetData()),
                          static_cast<std::size_t>(target.GetSize())),
              folded);
  }
}

TEST_F(PolicyFileCipher, NoKeyIsMadeUpWhereTheMachineFails) {
  if (!platform::kHasFaults) GTEST_SKIP() << "nothing fails here";
  platform::SetFault("CFile::Open", 0, ERROR_ACCESS_DENIED);
  EXPECT_TRUE(Opens("abc", "")) << "a source that cannot be opened is none";
  platform::ClearFaults();
  platform::SetFault("CFile::Read", 0, ERROR_GEN_FAILURE);
  EXPECT_THROW(Opens("abc", ""), CFileException);
  for (const char* call : {"CryptAcquireContextW", "CryptCreateHash", "CryptHashData",
                           "CryptGetHashParam", "WideCharToMultiByte"}) {
    platform::ClearFaults();
    platform::SetFault(call, 0, ERROR_ACCESS_DENIED);
    EXPECT_THROW(Opens("abc", ""), CInvalidArgException) << call;
  }
  for (const unsigned goodCalls : {0, 1}) {
    platform::SetFault("WideCharToMultiByte", goodCalls, ERROR_ACCESS_DENIED);
    CByteArray bytes;
    EXPECT_EQ(CPolicyFileCipher::TextToAnsiBytes(L"abc", bytes), 1) << goodCalls;
  }
}

TEST_F(PolicyFileCipher, EachChunkIsAMessageOfItsOwn) {
  m_machine.Write(kKeySource, "HarborLedge-0123456789-abcdefghi");
  const Key key = KeyOf(Material("8BAF48E35BCDBE5292E27D647EE01D70", 32));
  const auto seal = [&key](const std::string& clear, std::size_t size) {
    return Seal(Padded(clear, size), key);
  };
  const std::string full = seal("one ", kChunk), endless(kChunk, 'x');
  const std::string cut = endless.substr(2) + "\xE9\x80";
  const struct {
    const char* name;
    std::string file, text;
  } cases[] = {
      {"nothing", "", ""},
      {"a short one", seal("<a>透かし</a>", 48), "<a>透かし</a>"},
      {"one chunk", full, "one "},
      {"a second one", full + seal("two", 16), "one two"},
      {"three", full + full + seal("three", 16), "one one three"},
      {"no NUL before the border", seal(endless, kChunk) + seal("y", 16), endless + "y"},
      {"a character across the border does not come out whole",
       seal(cut, kChunk) + seal("\x8F!", 16), endless.substr(2) + "\xEF\xBF\xBD\xEF\xBF\xBD!"},
      {"zeros in place of what a block lacks", seal("whole", 32).substr(0, 21), "whole"}};
  for (const auto& test : cases)  // The texts are too long to be shown.
    EXPECT_TRUE(Decrypted(test.file) == test.text) << test.name;
  const std::string oneByte = Decrypted("z");  // And zeros, whatever stood there before.
  EXPECT_NE(oneByte, "");
  EXPECT_EQ(Decrypted(full + "z"), "one " + oneByte);
}

}  // namespace
}  // namespace tests
