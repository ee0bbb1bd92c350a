#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <tuple>

#include "platform/file.h"

namespace {

TEST(Path, LosesItsLastPieceAndTakesMore) {
  using Row = std::tuple<const wchar_t*, const wchar_t*, const wchar_t*>;
  // Without more, the last piece goes.
  for (const auto& [before, more, after] :
       {Row(L"C:\\a\\b.exe", nullptr, L"C:\\a"), Row(L"C:\\a\\b\\", nullptr, L"C:\\a\\b"),
        Row(L"C:\\a", nullptr, L"C:\\"), Row(L"C:\\", nullptr, L"C:\\"), Row(L"C:", nullptr, L"C:"),
        Row(L"\\a", nullptr, L"\\"), Row(L"\\\\srv\\a", nullptr, L"\\\\srv"),
        Row(L"a", nullptr, L""), Row(L"", nullptr, L""), Row(L"a\\b/c", nullptr, L"a"),
        Row(L"C:\\a", L"b\\c.dll", L"C:\\a\\b\\c.dll"), Row(L"C:\\a\\", L"b", L"C:\\a\\b"),
        Row(L"", L"a\\b", L"a\\b")}) {
    wchar_t path[MAX_PATH];
    std::wcscpy(path, before);
    if (more == nullptr)
      EXPECT_EQ(PathRemoveFileSpecW(path) != FALSE, std::wcscmp(before, after) != 0) << before;
    else
      EXPECT_TRUE(PathAppendW(path, more));
    EXPECT_STREQ(path, after);
  }
  wchar_t path[MAX_PATH + 1] = L"C:\\a";
  EXPECT_TRUE(PathAppendW(path, std::wstring(MAX_PATH - 1 - 5, L'x').c_str()));
  path[MAX_PATH] = L'#';
  EXPECT_FALSE(PathAppendW(path, L"y"));
  EXPECT_STREQ(path, L"");
  EXPECT_EQ(path[MAX_PATH], L'#');
}

}  // namespace
