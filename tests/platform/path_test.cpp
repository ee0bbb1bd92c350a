#include <gtest/gtest.h>

#include <cwchar>
#include <string>

#include "platform/file.h"
#include "tests/support/test_machine.h"

namespace {

TEST(Path, LosesItsLastPiece) {
  const struct {
    const wchar_t* path;
    const wchar_t* rest;
    bool changed;
  } cases[] = {
      {L"C:\\a\\b.exe", L"C:\\a", true},
      {L"C:\\a\\b\\", L"C:\\a\\b", true},
      {L"C:\\a", L"C:\\", true},
      {L"C:\\", L"C:\\", false},
      {L"C:", L"C:", false},
      {L"C:a", L"C:", true},
      {L"\\a", L"\\", true},
      {L"\\", L"\\", false},
      {L"\\\\srv\\a", L"\\\\srv", true},
      {L"a\\b", L"a", true},
      {L"a", L"", true},
      {L"", L"", false},
      {L"a\\b/c", L"a", true},
#ifndef _WIN32
      {L"/usr/bin/a", L"/usr/bin", true},
      {L"/a", L"/", true},
#endif
  };
  for (const auto& each : cases) {
    wchar_t path[MAX_PATH];
    std::wcscpy(path, each.path);
    EXPECT_EQ(PathRemoveFileSpecW(path) != FALSE, each.changed) << each.path;
    EXPECT_STREQ(path, each.rest);
  }
  EXPECT_FALSE(PathRemoveFileSpecW(nullptr));
}

TEST(Path, TakesMorePieces) {
  const struct {
    const wchar_t* path;
    const wchar_t* more;
    const wchar_t* result;
  } cases[] = {
      {L"C:\\a", L"b\\c.dll", L"C:\\a\\b\\c.dll"},
      {L"C:\\a\\", L"b", L"C:\\a\\b"},
      {L"C:\\a", L"\\b", L"C:\\a\\b"},
      {L"C:\\a\\", L"\\b", L"C:\\a\\b"},
      {L"C:\\", L"b", L"C:\\b"},
      {L"C:", L"b", L"C:\\b"},
      {L"", L"a\\b", L"a\\b"},
      {L"C:\\a", L"", L"C:\\a"},
      {L"C:\\a", L"D:\\b", L"D:\\b"},
      {L"C:\\a", L"\\\\srv\\b", L"\\\\srv\\b"},
      {L"C:\\a\\b", L"..\\c", L"C:\\a\\c"},
      {L"C:\\a", L".\\b\\.\\c", L"C:\\a\\b\\c"},
      {L"C:\\a", L"..\\..\\..\\b", L"C:\\b"},
      {L"C:\\name_1\\.\\name_2", L"..\\name_3", L"C:\\name_1\\name_3"},
      {L"..\\path1\\path2", L"path3", L"\\path1\\path2\\path3"},
#ifndef _WIN32
      {L"/usr/bin", L"a\\b.dll", L"/usr/bin/a/b.dll"},
      {L"/usr/bin", L"..\\lib", L"/usr/lib"},
      {L"/", L"a", L"/a"},
#endif
  };
  for (const auto& each : cases) {
    // Wine keeps the dots of a path that has no root.
    if (tests::IsWine() && each.path[0] == L'.') continue;
    wchar_t path[MAX_PATH];
    std::wcscpy(path, each.path);
    EXPECT_TRUE(PathAppendW(path, each.more));
    EXPECT_STREQ(path, each.result);
  }
}

TEST(Path, HasRoomForMaxPathUnits) {
  wchar_t path[MAX_PATH + 1] = L"C:\\a";
  EXPECT_TRUE(PathAppendW(path, std::wstring(MAX_PATH - 1 - 5, L'x').c_str()));
  EXPECT_EQ(std::wcslen(path), std::size_t{MAX_PATH} - 1);
  path[MAX_PATH] = L'#';
  EXPECT_FALSE(PathAppendW(path, L"y"));
  EXPECT_STREQ(path, L"");
  EXPECT_EQ(path[MAX_PATH], L'#');
  EXPECT_FALSE(PathAppendW(path, nullptr));
  EXPECT_FALSE(PathAppendW(nullptr, L"y"));
}

TEST(Path, TellsWhatIsThere) {
  tests::TestMachine machine;
  machine.Write(L"C:\\SigilTest\\file", "x");
  const struct {
    LPCWSTR path;
    bool exists;
    bool isFolder;
  } cases[] = {{L"C:\\SigilTest\\file", true, false},
               {L"C:\\SigilTest", true, true},
               {L"C:\\SigilTest\\", true, true},
               {L"C:\\SigilTest\\no", false, false},
               {L"C:\\SigilTest\\file\\x", false, false},
               {L"", false, false},
               {nullptr, false, false}};
  for (const auto& each : cases) {
    EXPECT_EQ(PathFileExistsW(each.path) != FALSE, each.exists);
    EXPECT_EQ(PathIsDirectoryW(each.path) != FALSE, each.isFolder);
  }
  EXPECT_FALSE(PathFileExistsW(L"C:\\no\\no"));
}

}  // namespace
