#include <gtest/gtest.h>

#include <fstream>

#include "platform/faults.h"
#include "platform/posix/machine.h"
#include "platform/shell.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

/// The path by way of an item list; empty when there is none.
std::wstring PathByList(int csidl) {
  IMalloc* allocator = nullptr;
  if (FAILED(SHGetMalloc(&allocator))) return L"";
  LPITEMIDLIST list = nullptr;
  wchar_t path[MAX_PATH] = L"";
  if (SUCCEEDED(SHGetSpecialFolderLocation(nullptr, csidl, &list))) {
    *path = L'#';
    const BOOL done = SHGetPathFromIDListW(list, path);
    EXPECT_EQ(done, *path != L'\0');
  }
  allocator->Free(list);
  allocator->Release();
  return path;
}

std::wstring Path(int csidl, BOOL create = FALSE) {
  wchar_t path[MAX_PATH] = L"#";
  const BOOL done = SHGetSpecialFolderPathW(nullptr, path, csidl, create);
  EXPECT_EQ(done, *path != L'\0');
  return path;
}

std::wstring KnownPath(const GUID& folder) {
  wchar_t* path = nullptr;
  const HRESULT result = SHGetKnownFolderPath(folder, 0, nullptr, &path);
  EXPECT_EQ(result == S_OK, path != nullptr);
  const std::wstring copy = path == nullptr ? L"" : path;
  CoTaskMemFree(path);
  return copy;
}

TEST(Shell, FoldersAreWhereTheyAreOnAMachine) {
  const TestMachine machine;
  const std::wstring local = L"C:\\Users\\tanaka\\AppData\\Local";
  EXPECT_EQ(PathByList(CSIDL_COMMON_APPDATA), L"C:\\ProgramData");
  EXPECT_EQ(PathByList(CSIDL_LOCAL_APPDATA), local);
  EXPECT_EQ(PathByList(0x7F), L"");
  EXPECT_EQ(Path(0x7F), L"");
  EXPECT_EQ(Path(CSIDL_LOCAL_APPDATA), local);
  EXPECT_FALSE(std::filesystem::exists(platform::HostPath(local)));
  EXPECT_EQ(Path(CSIDL_LOCAL_APPDATA, TRUE), local);
  EXPECT_TRUE(std::filesystem::exists(platform::HostPath(local)));
  EXPECT_EQ(KnownPath(FOLDERID_LocalAppDataLow), L"C:\\Users\\tanaka\\AppData\\LocalLow");
  EXPECT_EQ(KnownPath(GUID{}), L"");

  const ITEMIDLIST empty = {};
  wchar_t path[MAX_PATH] = L"#";
  EXPECT_FALSE(SHGetPathFromIDListW(&empty, path));
  EXPECT_FALSE(SHGetPathFromIDListW(nullptr, path));
}

TEST(Shell, APathBeyondTheCallersBufferIsNone) {
  const TestMachine machine;
  const std::wstring user(MAX_PATH, L'u');
  std::ofstream(platform::MachineRoot() / "machine.ini")
      << "[Machine]\nUser=" << platform::ToUtf8(user);
  EXPECT_EQ(Path(CSIDL_LOCAL_APPDATA), L"");
  EXPECT_EQ(PathByList(CSIDL_LOCAL_APPDATA), L"");
  EXPECT_EQ(KnownPath(FOLDERID_LocalAppDataLow), L"C:\\Users\\" + user + L"\\AppData\\LocalLow");
}

TEST(Shell, EveryCallFailsAsAskedTo) {
  const TestMachine machine;
  const struct {
    const char* operation;
    std::wstring (*call)();
  } kCases[] = {
      {"SHGetMalloc", [] { return PathByList(CSIDL_COMMON_APPDATA); }},
      {"SHGetSpecialFolderLocation", [] { return PathByList(CSIDL_COMMON_APPDATA); }},
      {"SHGetPathFromIDListW", [] { return PathByList(CSIDL_COMMON_APPDATA); }},
      {"SHGetSpecialFolderPathW", [] { return Path(CSIDL_COMMON_APPDATA); }},
      {"SHGetKnownFolderPath", [] { return KnownPath(FOLDERID_LocalAppDataLow); }},
  };
  for (const auto& each : kCases) {
    EXPECT_NE(each.call(), L"") << each.operation;
    for (const HRESULT error : {static_cast<HRESULT>(ERROR_ACCESS_DENIED), E_OUTOFMEMORY}) {
      platform::SetFault(each.operation, 0, static_cast<DWORD>(error));
      EXPECT_EQ(each.call(), L"") << each.operation;
    }
    platform::ClearFaults();
  }
}

}  // namespace
}  // namespace tests
