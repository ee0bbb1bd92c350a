#include "policy/policy_file_cipher.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/codepage.h"
#include "platform/crt.h"
#include "platform/faults.h"
#include "platform/utf.h"
#include "tests/support/seal.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

constexpr std::size_t kChunk = 0x100000;

std::string Material() {
  CByteArray material;
  CPolicyFileCipher().BuildKeyMaterial(material);
  return std::string(reinterpret_cast<const char*>(material.GetData()),
                     static_cast<std::size_t>(material.GetSize()));
}

std::string Decrypted(TestMachine& machine, const std::string& file) {
  machine.Write(kPolicyFile, file);
  CString text;
  EXPECT_EQ(CPolicyFileCipher().DecryptFile(kPolicyFile, text), 0);
  return platform::ToUtf8(std::wstring_view(text.GetString()));
}

// The digits are those of `printf TEXT | md5sum`.
constexpr char kDigitsOfAbc[] = "900150983CD24FB0D6963F7D28E17F72";

/// The digits, terminator included, laid on the even positions first.
std::string Laid(const std::string& digits, std::size_t size) {
  const std::string taken = digits + '\0';
  std::string material(size, '?');
  std::size_t next = 0;
  for (std::size_t at = 0; at < size; at += 2) material[at] = taken.at(next++);
  for (std::size_t at = 1; at < size; at += 2) material[at] = taken.at(next++);
  return material;
}

TEST(PolicyFileCipher, MaterialHasTheSizeOfItsSource) {
  TestMachine machine;
  EXPECT_EQ(Material(), "") << "no source";
  machine.Write(kKeySource, "");
  EXPECT_EQ(Material(), "");
  for (std::size_t size = 3; size <= 33; ++size) {
    machine.Write(kKeySource, "abc" + std::string(size - 3, '\0'));
    EXPECT_EQ(Material(), Laid(kDigitsOfAbc, size)) << size;
  }
  machine.Write(kKeySource, std::string("abc\0xyz", 7));
  EXPECT_EQ(Material(), Laid(kDigitsOfAbc, 7)) << "what follows a NUL is not hashed";
  machine.Write(kKeySource, std::string(1, '\0'));
  EXPECT_EQ(Material(), std::string(1, '\0')) << "an empty text has no digits";
  // Two characters are two units and four bytes: the digest is that of the first two bytes.
  machine.Write(kKeySource, "\x93\xFA\x96\x7B");
  EXPECT_EQ(Material(), "2EA4") << "the first digits of MD5(93 FA), 2AE4, crosswise";
}

TEST(PolicyFileCipher, ASourceBeyondTheDigitsIsAnError) {
  TestMachine machine;
  for (const std::size_t size : {34U, 2048U, 2049U, 100000U}) {
    machine.Write(kKeySource, std::string(size, 'k'));
    EXPECT_THROW(Material(), CInvalidArgException) << size;
  }
  machine.Write(kKeySource, std::string(2, '\0'));
  EXPECT_THROW(Material(), CInvalidArgException) << "no digits for two bytes";
  if (!platform::kHasFaults) return;
  machine.Write(kKeySource, "abc");
  platform::SetFault("CFile::Read", 0, ERROR_GEN_FAILURE);
  EXPECT_THROW(Material(), CFileException);
  platform::ClearFaults();
  platform::SetFault("CFile::Open", 0, ERROR_ACCESS_DENIED);
  EXPECT_EQ(Material(), "");
  platform::ClearFaults();
  for (const char* call : {"CryptAcquireContextW", "CryptCreateHash", "CryptHashData",
                           "CryptGetHashParam", "WideCharToMultiByte"}) {
    platform::SetFault(call, 0, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(CPolicyFileCipher::HashHex(L"abc").IsEmpty()) << call;
    platform::ClearFaults();
  }
}

TEST(PolicyFileCipher, FoldsOnceIntoTheTarget) {
  const struct {
    INT_PTR source, target;
    std::string expected;
  } kCases[] = {{3, 4, {1, 2, 3, 0}},
                {4, 4, {1, 2, 3, 4}},
                {5, 4, {1 ^ 5, 2, 3, 4}},
                {9, 4, {1 ^ 5 ^ 9, 2 ^ 6, 3 ^ 7, 4 ^ 8}}};
  for (const auto& one : kCases) {
    CByteArray source, target;
    for (INT_PTR i = 0; i < one.source; ++i) source.Add(static_cast<BYTE>(i + 1));
    target.SetSize(one.target);
    CPolicyFileCipher::FoldBytes(source, target);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(target.GetData()), 4), one.expected);
  }
}

TEST(PolicyFileCipher, EachChunkIsAMessageOfItsOwn) {
  TestMachine machine;
  const std::string source = "HarborLedge-0123456789-abcdefghi";
  ASSERT_EQ(source.size(), 32U);
  machine.Write(kKeySource, source);
  const Key key = KeyOf(Laid("8BAF48E35BCDBE5292E27D647EE01D70", 32));
  const auto seal = [&key](std::string clear) { return Seal(clear, key); };
  const auto padded = [](std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
  };

  EXPECT_EQ(Decrypted(machine, ""), "");
  EXPECT_EQ(Decrypted(machine, seal(padded("<a>透かし</a>", 48))), "<a>透かし</a>");
  const std::string full = seal(padded("one ", kChunk));
  EXPECT_EQ(Decrypted(machine, full), "one ");
  EXPECT_EQ(Decrypted(machine, full + seal(padded("two", 16))), "one two");
  EXPECT_EQ(Decrypted(machine, full + full + seal(padded("three", 16))), "one one three");

  const std::string endless(kChunk, 'x');
  EXPECT_EQ(Decrypted(machine, seal(endless) + seal(padded("y", 16))), endless + "y")
      << "a chunk without NUL ends at its border";
  const std::string cut = endless.substr(2) + "\xE9\x80", rest = "\x8F!";
  EXPECT_EQ(Decrypted(machine, seal(cut) + seal(padded(rest, 16))),
            endless.substr(2) + "\xEF\xBF\xBD\xEF\xBF\xBD!")
      << "a character across the border does not come out whole";
  // A block without its end is decrypted with zeros in its place.
  EXPECT_EQ(Decrypted(machine, seal(padded("whole", 32)).substr(0, 21)), "whole");
  EXPECT_NE(Decrypted(machine, full + "z"), "one ") << "one byte of a second chunk counts";

  machine.Write(kKeySource, "another");
  EXPECT_NE(Decrypted(machine, seal(padded("secret", 16))), "secret");
  machine.Remove(kKeySource);
  EXPECT_EQ(Decrypted(machine, Seal(padded("no key", 16), Key())), "no key");
}

TEST(PolicyFileCipher, AFileThatCannotBeOpenedIsOne) {
  TestMachine machine;
  CString text = L"kept";
  EXPECT_EQ(CPolicyFileCipher().DecryptFile(kPolicyFile, text), 1);
  machine.Write(kPolicyFile, std::string(16, 'x'));
  if (platform::kHasFaults) {
    for (const char* call : {"CFile::GetStatus", "_wfopen_s"}) {
      platform::SetFault(call, 0, ERROR_ACCESS_DENIED);
      EXPECT_EQ(CPolicyFileCipher().DecryptFile(kPolicyFile, text), 1) << call;
      platform::ClearFaults();
    }
  }
  EXPECT_STREQ(text, L"kept");
}

}  // namespace
}  // namespace tests
