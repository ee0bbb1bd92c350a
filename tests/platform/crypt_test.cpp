#include "platform/crypt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/security.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace {

using tests::ErrorOf;

TEST(Crypt, DigestsAreThoseOfRfc1321) {
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
  ASSERT_TRUE(CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_FULL,
                                   CRYPT_VERIFYCONTEXT | CRYPT_MACHINE_KEYSET));
  const auto add = [&](std::string_view text) {
    return CryptHashData(hash, reinterpret_cast<const BYTE*>(text.data()),
                         static_cast<DWORD>(text.size()), 0);
  };
  using Row = std::pair<std::string_view, std::string_view>;
  for (const auto& [text, digest] :
       {Row("", "d41d8cd98f00b204e9800998ecf8427e"), Row("abc", "900150983cd24fb0d6963f7d28e17f72"),
        Row("12345678901234567890123456789012345678901234567890123456789012345678901234567890",
            "57edf4a22be3c955ac49da2e2107b67a")}) {
    ASSERT_TRUE(CryptCreateHash(provider, CALG_MD5, 0, 0, &hash));
    EXPECT_TRUE(add(text.substr(0, text.size() / 2)) && add(text.substr(text.size() / 2)));
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
  EXPECT_EQ(ErrorOf(CryptCreateHash(provider, 0x1234, 0, 0, &hash)),
            static_cast<DWORD>(NTE_BAD_ALGID));
  EXPECT_TRUE(CryptReleaseContext(provider, 0));
  EXPECT_EQ(ErrorOf(CryptAcquireContextW(&provider, nullptr, nullptr, 99, CRYPT_VERIFYCONTEXT)),
            static_cast<DWORD>(NTE_PROV_TYPE_NOT_DEF));
}

TEST(Security, ADescriptorIsARevisionAndItsControlBits) {
  auto* const block = static_cast<BYTE*>(LocalAlloc(LPTR, sizeof(void*) == 8 ? 40 : 20));
  ASSERT_NE(block, nullptr);
  const auto isZero = [&](int from) {
    return std::all_of(block + from, block + 20, [](BYTE byte) { return byte == 0; });
  };
  EXPECT_TRUE(isZero(0));
  EXPECT_EQ(ErrorOf(InitializeSecurityDescriptor(block, 2)), DWORD{ERROR_UNKNOWN_REVISION});
  EXPECT_EQ(ErrorOf(SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE)),
            DWORD{ERROR_UNKNOWN_REVISION});
  std::memset(block, 0xFF, 20);
  ASSERT_TRUE(InitializeSecurityDescriptor(block, SECURITY_DESCRIPTOR_REVISION));
  const auto control = [&] { return block[0] * 0x10000 + block[3] * 0x100 + block[2]; };
  EXPECT_EQ(control(), 0x10000);
  EXPECT_TRUE(SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE));
  EXPECT_EQ(control(), 0x10004);
  EXPECT_TRUE(isZero(4));
  EXPECT_EQ(LocalFree(block), nullptr);
}

}  // namespace
