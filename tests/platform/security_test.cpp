#include "platform/security.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/platform/calls.h"

namespace {

using tests::ErrorOf;

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
