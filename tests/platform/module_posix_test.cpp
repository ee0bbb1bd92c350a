#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "platform/file.h"
#include "platform/module.h"
#include "platform/posix/machine.h"
#include "platform/shell.h"
#include "platform/utf.h"
#include "tests/support/test_machine.h"

namespace {

namespace fs = std::filesystem;

constexpr wchar_t kModule[] = L"entry_module.dll";

std::wstring PathOf(HMODULE module) {
  wchar_t path[4096];
  const DWORD length = GetModuleFileNameW(module, path, 4096);
  return {path, length};
}

/// The full path of a file beside the host executable, by the operations for it.
std::wstring BesideHost(LPCWSTR name) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  EXPECT_TRUE(PathRemoveFileSpecW(path));
  EXPECT_TRUE(PathAppendW(path, name));
  return path;
}

/// A function's address, which is nothing to call yet.
void* Find(HMODULE module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(module, name));
}

void ExpectNone(const void* result, DWORD error) {
  EXPECT_EQ(result, nullptr);
  EXPECT_EQ(GetLastError(), error);
}

class Modules : public testing::Test {
 protected:
  void SetUp() override { setenv("ENTRY_CALLS", "", 1); }
  static std::string Calls() { return getenv("ENTRY_CALLS"); }

  tests::TestMachine m_machine;
};

TEST_F(Modules, AreLoadedOnceAndCounted) {
  const HMODULE module = LoadLibraryW(L"entry_module");
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(Calls(), "+");
  EXPECT_EQ(LoadLibraryW(BesideHost(kModule).c_str()), module);
  EXPECT_EQ(PathOf(module), BesideHost(kModule));
  for (const std::wstring& name :
       {std::wstring(kModule), std::wstring(L"ENTRY_MODULE"), BesideHost(kModule)})
    EXPECT_EQ(GetModuleHandleW(name.c_str()), module);
  EXPECT_EQ(reinterpret_cast<int (*)()>(Find(module, "Answer"))(), 42);
  for (const char* name : {"answer", "strlen", static_cast<const char*>(nullptr)}) {
    SetLastError(0);
    ExpectNone(Find(module, name), ERROR_PROC_NOT_FOUND);
  }
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(Calls(), "+");
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_EQ(Calls(), "+-");
  ExpectNone(GetModuleHandleW(kModule), ERROR_MOD_NOT_FOUND);
  EXPECT_FALSE(FreeLibrary(module));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  ExpectNone(Find(module, "Answer"), ERROR_INVALID_HANDLE);
  EXPECT_EQ(PathOf(module), L"");
}

TEST_F(Modules, LieOnTheMachineToo) {
  constexpr wchar_t kPath[] = L"C:\\SigilTest\\own.dll";
  fs::copy_file(platform::HostPath(BesideHost(kModule)), platform::HostPath(kPath));
  const HMODULE module = LoadLibraryW(kPath);
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(PathOf(module), kPath);
  EXPECT_EQ(LoadLibraryW(L"own.dll"), module);
  EXPECT_TRUE(FreeLibrary(module) && FreeLibrary(module));
}

TEST_F(Modules, TellWhyTheyAreNotLoaded) {
  m_machine.Write(L"C:\\SigilTest\\text.dll", "no library");
  m_machine.Write(L"C:\\SigilTest\\broken.dll",
                  "\x7F"
                  "ELF");
  ExpectNone(LoadLibraryW(L"C:\\SigilTest\\text"), ERROR_BAD_EXE_FORMAT);
  ExpectNone(LoadLibraryW(L"C:\\SigilTest\\broken.dll"), ERROR_MOD_NOT_FOUND);
  ExpectNone(LoadLibraryW(L"C:\\SigilTest\\text."), ERROR_MOD_NOT_FOUND);
  ExpectNone(LoadLibraryW(L"C:\\SigilTest"), ERROR_MOD_NOT_FOUND);
  ExpectNone(LoadLibraryW(L"absent.dll"), ERROR_MOD_NOT_FOUND);
  ExpectNone(LoadLibraryW(L""), ERROR_INVALID_PARAMETER);
  ExpectNone(LoadLibraryW(nullptr), ERROR_INVALID_PARAMETER);

  setenv("ENTRY_REFUSES", "1", 1);
  ExpectNone(LoadLibraryW(kModule), ERROR_DLL_INIT_FAILED);
  unsetenv("ENTRY_REFUSES");
  EXPECT_EQ(Calls(), "+-");
  ExpectNone(GetModuleHandleW(kModule), ERROR_MOD_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(LoadLibraryW(kModule)));
  EXPECT_EQ(Calls(), "+-+-");
}

TEST_F(Modules, IncludeTheHostAndTheShell) {
  const std::wstring host = PathOf(nullptr);
  EXPECT_EQ(host, platform::FromUtf8(fs::read_symlink("/proc/self/exe").string()));
  EXPECT_EQ(PathOf(GetModuleHandleW(nullptr)), host);
  wchar_t path[5] = L"####";
  EXPECT_EQ(GetModuleFileNameW(nullptr, path, 3), 3U);
  EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(path, host.substr(0, 2));
  EXPECT_EQ(path[3], L'#');
  EXPECT_EQ(GetModuleFileNameW(nullptr, nullptr, 0), 0U);

  const HMODULE shell = LoadLibraryW(L"Shell32");
  EXPECT_EQ(GetModuleHandleW(L"shell32.dll"), shell);
  EXPECT_EQ(Find(shell, "SHGetKnownFolderPath"), reinterpret_cast<void*>(&SHGetKnownFolderPath));
  ExpectNone(Find(shell, "strlen"), ERROR_PROC_NOT_FOUND);
  EXPECT_TRUE(FreeLibrary(shell));
  EXPECT_FALSE(FreeLibrary(shell));
}

}  // namespace
