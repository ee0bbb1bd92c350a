#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "platform/file.h"
#include "platform/module.h"
#include "platform/posix/machine/machine.h"
#include "tests/platform/calls.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using tests::ErrorOf;

constexpr wchar_t kModule[] = L"entry_module.dll";

/// The full path of the module, which lies beside the host executable.
std::wstring FullPath() {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  EXPECT_TRUE(PathRemoveFileSpecW(path) && PathAppendW(path, kModule));
  return path;
}

class Modules : public testing::Test {
 protected:
  void SetUp() override { setenv("ENTRY_CALLS", "", 1); }
  static std::string Calls() { return getenv("ENTRY_CALLS"); }

  tests::TestMachine m_machine;
};

TEST_F(Modules, AreLoadedOnceAndCounted) {
  const HMODULE module = LoadLibraryW(FullPath().c_str());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(LoadLibraryW(FullPath().c_str()), module);
  EXPECT_EQ(GetModuleHandleW(kModule), module);
  EXPECT_NE(GetProcAddress(module, "Answer"), nullptr);
  for (const char* name : {"answer", "strlen"})
    EXPECT_EQ(ErrorOf(GetProcAddress(module, name)), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(Calls(), "+");
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(Calls(), "+-");
  EXPECT_EQ(ErrorOf(GetModuleHandleW(kModule)), ERROR_MOD_NOT_FOUND);
  EXPECT_EQ(ErrorOf(FreeLibrary(module)), ERROR_INVALID_HANDLE);
  EXPECT_EQ(ErrorOf(GetProcAddress(module, "Answer")), ERROR_INVALID_HANDLE);
}

TEST_F(Modules, TellWhyTheyAreNotLoaded) {
  constexpr wchar_t kPath[] = L"C:\\SigilTest\\own.dll";
  fs::copy_file(platform::HostPath(FullPath()), platform::HostPath(kPath));
  EXPECT_EQ(ErrorOf(LoadLibraryW(kPath)), ERROR_ACCESS_DENIED) << "a machine holds no code";

  const std::wstring folder = platform::HostPath(L"C:\\SigilTest").wstring();
  m_machine.Write(L"C:\\SigilTest\\text.dll", "no library");
  EXPECT_EQ(ErrorOf(LoadLibraryW((folder + L"/text.dll").c_str())), ERROR_BAD_EXE_FORMAT);
  for (const std::wstring& name : {folder + L"/text", folder})
    EXPECT_EQ(ErrorOf(LoadLibraryW(name.c_str())), ERROR_MOD_NOT_FOUND);
  for (const wchar_t* name : {L"", kModule})
    EXPECT_EQ(ErrorOf(LoadLibraryW(name)), ERROR_ACCESS_DENIED);

  setenv("ENTRY_CALLS", "", 1);
  setenv("ENTRY_REFUSES", "1", 1);
  EXPECT_EQ(ErrorOf(LoadLibraryW(FullPath().c_str())), ERROR_DLL_INIT_FAILED);
  unsetenv("ENTRY_REFUSES");
  EXPECT_EQ(ErrorOf(GetModuleHandleW(kModule)), ERROR_MOD_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(LoadLibraryW(FullPath().c_str())));
  EXPECT_EQ(Calls(), "+-+-");
}

}  // namespace
