#include "platform/crypt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "platform/security.h"
#include "tests/platform/calls.h"

namespace {

using tests::ErrorOf;

TEST(Crypt, DigestsAreThoseOfRfc1321) {
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
  ASSERT_TRUE(CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_FULL,
                                   CRYPT_VERIFYCONTEXT | CRYPT_MACHINE_KEYSET));
  const auto add = [&](const char* text) {
    return CryptHashData(hash, reinterpret_cast<const BYTE*>(text),
                         static_cast<DWORD>(std::strlen(text)), 0);
  };
  const char kTens[] = "12345678901234567890123456789012345678901234567890";
  using Row = std::tuple<const char*, const char*, std::string>;
  for (const auto& [first, second, digest] :
       {Row("", "", "d41d8cd98f00b204e9800998ecf8427e"),
        Row("a", "bc", "900150983cd24fb0d6963f7d28e17f72"),
        Row(kTens, kTens + 20, "57edf4a22be3c955ac49da2e2107b67a")}) {
    ASSERT_TRUE(CryptCreateHash(provider, CALG_MD5, 0, 0, &hash));
    EXPECT_TRUE(add(first) && add(second));
    BYTE value[16] = {};
    DWORD size = 15;
    EXPECT_EQ(ErrorOf(CryptGetHashParam(hash, HP_HASHVAL, value, &size, 0)), ERROR_MORE_DATA);
    EXPECT_EQ(size, sizeof value);
    EXPECT_TRUE(CryptGetHashParam(hash, HP_HASHVAL, value, &size, 0));
    std::string shown;
    for (const BYTE byte : value)
      for (const int digit : {byte >> 4, byte & 15}) shown += "0123456789abcdef"[digit];
    EXPECT_EQ(shown, digest);
    EXPECT_EQ(ErrorOf(add("more")), static_cast<DWORD>(NTE_BAD_HASH_STATE));
    EXPECT_TRUE(CryptDestroyHash(hash));
  }
  EXPECT_TRUE(CryptReleaseContext(provider, 0));
}

TEST(Security, ADescriptorIsARevisionAndItsControlBits) {
  std::string expected(20, '\0');
  auto* const block = static_cast<BYTE*>(LocalAlloc(LPTR, expected.size()));
  const auto bytes = [&] { return std::string(block, block + expected.size()); };
  EXPECT_EQ(bytes(), expected);
  EXPECT_EQ(ErrorOf(InitializeSecurityDescriptor(block, 2)), DWORD{ERROR_UNKNOWN_REVISION});
  std::memset(block, 0xFF, expected.size());
  EXPECT_TRUE(InitializeSecurityDescriptor(block, SECURITY_DESCRIPTOR_REVISION));
  expected[0] = 1;
  EXPECT_EQ(bytes(), expected);
  EXPECT_TRUE(SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE));
  expected[2] = 4;
  EXPECT_EQ(bytes(), expected);
  EXPECT_EQ(LocalFree(block), nullptr);
}

}  // namespace
