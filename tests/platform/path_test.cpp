#include <gtest/gtest.h>

#include <string>

#include "platform/file.h"

namespace {

TEST(Path, IsEmptiedRatherThanOverrun) {
  wchar_t path[MAX_PATH + 1] = L"C:\\a";
  EXPECT_TRUE(PathAppendW(path, std::wstring(MAX_PATH - 1 - 5, L'x').c_str()));
  path[MAX_PATH] = L'#';
  EXPECT_FALSE(PathAppendW(path, L"y"));
  EXPECT_STREQ(path, L"");
  EXPECT_EQ(path[MAX_PATH], L'#');
}

}  // namespace
