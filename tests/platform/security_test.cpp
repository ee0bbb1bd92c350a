#include "platform/security.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

TEST(Security, ADescriptorIsARevisionAndItsControlBits) {
  auto* const block = static_cast<BYTE*>(LocalAlloc(LPTR, sizeof(void*) == 8 ? 40 : 20));
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(std::all_of(block, block + 20, [](BYTE byte) { return byte == 0; }));
  EXPECT_FALSE(InitializeSecurityDescriptor(block, 2));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});
  EXPECT_FALSE(SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});

  std::memset(block, 0xFF, 20);
  ASSERT_TRUE(InitializeSecurityDescriptor(block, SECURITY_DESCRIPTOR_REVISION));
  const auto control = [&] { return block[0] * 0x10000 + block[3] * 0x100 + block[2]; };
  EXPECT_EQ(control(), 0x10000);
  EXPECT_TRUE(SetSecurityDescriptorDacl(block, TRUE, nullptr, TRUE));
  EXPECT_EQ(control(), 0x1000C);
  EXPECT_TRUE(SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE));
  EXPECT_EQ(control(), 0x10004);
  EXPECT_TRUE(SetSecurityDescriptorDacl(block, FALSE, nullptr, FALSE));
  EXPECT_EQ(control(), 0x10000);
  EXPECT_TRUE(std::all_of(block + 4, block + 20, [](BYTE byte) { return byte == 0; }));
  EXPECT_EQ(LocalFree(block), nullptr);
  EXPECT_EQ(LocalFree(nullptr), nullptr);
}

}  // namespace
