// The library's own C++ run-time in a process that has others and outlives it.

#include <gtest/gtest.h>

#include "tests/support/holdings_windows.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

/// A second copy of the library, since this process is bound to the first one.
class Copy {
 public:
  Copy() : m_file(fs::path(kSettingFolder) / L"Copy.dll") {
    if (!fs::exists(m_file)) fs::copy_file(L"SigilSetting.dll", m_file);
    m_library = LoadLibraryW(m_file.c_str());
    if (m_library == nullptr)
      throw std::runtime_error("Copy.dll: " + std::to_string(GetLastError()));
  }
  ~Copy() { FreeLibrary(m_library); }
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;

  int SetWaterMark() const {
    return reinterpret_cast<int (*)()>(
        reinterpret_cast<void*>(GetProcAddress(m_library, "SigilSettingSetWaterMark")))();
  }

 private:
  fs::path m_file;
  HMODULE m_library;
};

/// Every pass that needs the policy ends with an exception: the key source is too long.
void HavePassesThrow(TestMachine& machine) {
  machine.Write(kSystemSetting, "63,1\r\n");
  machine.Write(kPolicyFile, SealPolicy("<QuietMIMOSA><HLE/></QuietMIMOSA>"));
  machine.Write(kKeySource, std::string(34, 'k'));
}

TEST(RunTime, CatchesItsOwnThrowsBesideAnother) {
  TestMachine machine;
  HavePassesThrow(machine);
  const HMODULE other = LoadLibraryW(L"libgcc_s_dw2-1.dll");
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(Copy().SetWaterMark(), -101);
  FreeLibrary(other);
}

TEST(RunTime, LeavesNothingBehindWhenTheLibraryGoes) {
  TestMachine machine;
  HavePassesThrow(machine);
  Copy().SetWaterMark();
  const Holdings before;
  constexpr int kLoads = 300;
  for (int i = 0; i < kLoads; ++i) ASSERT_EQ(Copy().SetWaterMark(), -101) << i;
  // A heap or the memory kept for exceptions would be a whole page at least.
  ExpectNothingGrew(before, kLoads);
}

std::uint16_t ControlWord() {
  std::uint16_t word = 0;
  __asm__ volatile("fnstcw %0" : "=m"(word));
  return word;
}

void SetControlWord(std::uint16_t word) {
  __asm__ volatile("fldcw %0" : : "m"(word));
}

TEST(RunTime, ANewThreadKeepsItsFloatingPointState) {
  const fs::path log = fs::absolute(SIGIL_BUILD_FOLDER "/log4cxx.dll");
  for (const HMODULE library : {GetModuleHandleW(L"SigilSetting.dll"), LoadLibraryW(log.c_str())}) {
    ASSERT_NE(library, nullptr);
    auto* const base = reinterpret_cast<char*>(library);
    const LONG offset = reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew;
    const auto& header = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + offset)->OptionalHeader;
    EXPECT_EQ(header.DataDirectory[IMAGE_DIRECTORY_ENTRY_TLS].VirtualAddress, 0U);
    const auto enter = reinterpret_cast<BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID)>(
        base + header.AddressOfEntryPoint);
    constexpr std::uint16_t kTruncatingSingle = 0x0C7F;
    const std::uint16_t own = ControlWord();
    SetControlWord(kTruncatingSingle);
    enter(library, DLL_THREAD_ATTACH, nullptr);
    const std::uint16_t left = ControlWord();
    SetControlWord(own);
    EXPECT_EQ(left, kTruncatingSingle);
  }
  FreeLibrary(GetModuleHandleW(log.c_str()));
}

}  // namespace
}  // namespace tests
