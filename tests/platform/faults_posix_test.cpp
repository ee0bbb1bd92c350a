#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "platform/codepage.h"
#include "platform/crt.h"
#include "platform/crypt.h"
#include "platform/faults.h"
#include "platform/file.h"
#include "platform/module.h"
#include "platform/synch.h"
#include "tests/support/test_machine.h"

namespace {

using platform::ClearFaults;
using platform::SetFault;
using platform::TakeFault;

TEST(Faults, ComeAfterTheGoodCalls) {
  SetFault("A", 2, 5);
  SetFault("B", 0, 6);
  std::vector<DWORD> answers;
  for (int i = 0; i < 4; ++i) answers.push_back(TakeFault("A").value_or(0));
  EXPECT_EQ(answers, (std::vector<DWORD>{0, 0, 5, 5}));
  EXPECT_EQ(TakeFault("B"), 6U);
  SetFault("B", 1, 7);
  EXPECT_EQ(TakeFault("B"), std::nullopt);
  EXPECT_EQ(TakeFault("B"), 7U);
  EXPECT_EQ(TakeFault("C"), std::nullopt);
  ClearFaults();
  EXPECT_EQ(TakeFault("A"), std::nullopt);

  static std::string observed;
  platform::SetObserver([](const char* operation) { observed += operation; });
  TakeFault("A");
  TakeFault("C");
  platform::SetObserver(nullptr);
  TakeFault("D");
  EXPECT_EQ(observed, "AC");
}

TEST(Faults, MakeEachOperationFailInItsOwnWay) {
  constexpr DWORD kError = 4321;
  tests::TestMachine machine;
  machine.Write(L"C:\\SigilTest\\file", "x");
  BYTE block[20] = {1};
  wchar_t text[4];
  char bytes[4];
  DWORD size = 0;
  std::FILE* stream = nullptr;
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
  ASSERT_TRUE(CryptAcquireContextW(&provider, nullptr, nullptr, 1, CRYPT_VERIFYCONTEXT));
  ASSERT_TRUE(CryptCreateHash(provider, CALG_MD5, 0, 0, &hash));
  const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
  const HANDLE file =
      CreateFileW(L"C:\\SigilTest\\file", GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const HMODULE shell = LoadLibraryW(L"shell32.dll");
  // In an order in which all of them also go well, each once.
  const std::pair<const char*, std::function<bool()>> goesWell[] = {
      {"CreateMutexW",
       [&] {
         const HANDLE other = CreateMutexW(nullptr, FALSE, L"x");
         return other != nullptr && CloseHandle(other);
       }},
      {"WaitForSingleObject", [&] { return WaitForSingleObject(mutex, 0) != WAIT_FAILED; }},
      {"ReleaseMutex", [&] { return ReleaseMutex(mutex) != 0; }},
      {"InitializeSecurityDescriptor", [&] { return InitializeSecurityDescriptor(block, 1) != 0; }},
      {"SetSecurityDescriptorDacl",
       [&] { return SetSecurityDescriptorDacl(block, TRUE, nullptr, FALSE) != 0; }},
      {"LocalAlloc",
       [&] { return LocalFree(LocalAlloc(LPTR, 20)) == nullptr && GetLastError() == 0; }},
      {"CreateFileW",
       [&] {
         return CreateFileW(L"C:\\SigilTest\\file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0,
                            nullptr) != INVALID_HANDLE_VALUE;
       }},
      {"WriteFile", [&] { return WriteFile(file, "y", 1, nullptr, nullptr) != 0; }},
      {"CloseHandle", [&] { return CloseHandle(file) && CloseHandle(mutex); }},
      {"PathFileExistsW", [&] { return PathFileExistsW(L"C:\\SigilTest") != 0; }},
      {"PathIsDirectoryW", [&] { return PathIsDirectoryW(L"C:\\SigilTest") != 0; }},
      {"LoadLibraryW", [&] { return LoadLibraryW(L"shell32.dll") != nullptr; }},
      {"GetModuleHandleW", [&] { return GetModuleHandleW(L"shell32.dll") != nullptr; }},
      {"GetModuleFileNameW", [&] { return GetModuleFileNameW(nullptr, text, 4) != 0; }},
      {"GetProcAddress", [&] { return GetProcAddress(shell, "SHGetKnownFolderPath") != nullptr; }},
      {"FreeLibrary", [&] { return FreeLibrary(shell) && FreeLibrary(shell); }},
      {"CryptHashData", [&] { return CryptHashData(hash, block, 1, 0) != 0; }},
      {"CryptGetHashParam",
       [&] { return CryptGetHashParam(hash, HP_HASHVAL, nullptr, &size, 0) != 0; }},
      {"CryptDestroyHash", [&] { return CryptDestroyHash(hash) != 0; }},
      {"CryptCreateHash",
       [&] { return CryptCreateHash(provider, CALG_MD5, 0, 0, &hash) && CryptDestroyHash(hash); }},
      {"CryptReleaseContext", [&] { return CryptReleaseContext(provider, 0) != 0; }},
      {"CryptAcquireContextW",
       [&] {
         return CryptAcquireContextW(&provider, nullptr, nullptr, 1, CRYPT_VERIFYCONTEXT) &&
                CryptReleaseContext(provider, 0);
       }},
      {"MultiByteToWideChar", [&] { return MultiByteToWideChar(0, 0, "a", 1, text, 4) == 1; }},
      {"WideCharToMultiByte",
       [&] { return WideCharToMultiByte(0, 0, L"a", 1, bytes, 4, nullptr, nullptr) == 1; }},
      {"_wfopen_s",
       [&] {
         const errno_t error = _wfopen_s(&stream, L"C:\\SigilTest\\file", L"rb");
         EXPECT_EQ(error == 0, stream != nullptr);
         return stream != nullptr && std::fclose(stream) == 0;
       }},
  };
  for (const auto& [operation, call] : goesWell) {
    SetFault(operation, 0, kError);
    SetLastError(0);
    EXPECT_FALSE(call()) << operation;
    EXPECT_EQ(GetLastError(), kError) << operation;
    ClearFaults();
    SetLastError(0);
    EXPECT_TRUE(call()) << operation;
  }
}

}  // namespace
