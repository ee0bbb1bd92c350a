// The plain logging component, which stands beside the recorder here.

#include <gtest/gtest.h>

#include <regex>

#include "tests/boundary/replacement_windows.h"
#include "tests/support/test_machine.h"

namespace tests {
namespace {

using Form = void (*)(int, int, const wchar_t*, int, const wchar_t*);
using FormWithCode = void (*)(int, int, const wchar_t*, int, int, const wchar_t*);
using FormWithLabel = void (*)(int, int, const wchar_t*, int, const wchar_t*, const wchar_t*);

constexpr wchar_t kFile[] =
    L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";

class Log : public testing::Test {
 protected:
  Log() {
    if (m_library == nullptr || m_library == m_recorder) throw std::runtime_error("not the log");
  }
  ~Log() override { FreeLibrary(m_library); }

  template <class Function>
  Function Entry(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(m_library, name)));
  }

  TestMachine m_machine;
  const HMODULE m_recorder = GetModuleHandleW(L"log4cxx.dll");
  const HMODULE m_library =
      LoadLibraryW(std::filesystem::absolute(SIGIL_BUILD_FOLDER "/log4cxx.dll").c_str());
  const Form m_plain = Entry<Form>("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH0@Z");
  const FormWithCode m_code = Entry<FormWithCode>("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WHH0@Z");
  const FormWithLabel m_label = Entry<FormWithLabel>("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH00@Z");
};

TEST_F(Log, AppendsALineForEachFormWithoutSetUp) {
  SetLastError(4711);
  m_plain(1, 153, L"F", 7, L"透かし");
  m_code(5, 154, L"G", 8, 231, L"a\nb");
  m_label(0, 155, L"H", 9, L"項目", L"63");
  EXPECT_EQ(GetLastError(), 4711U);
  const std::string head =
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} )" + std::to_string(GetCurrentProcessId()) + " ";
  const std::string lines = head + R"(1 153 F\(7\) 透かし\n)" + head +
                            R"(5 154 G\(8\) a\\nb \(code 231\)\n)" + head +
                            R"(0 155 H\(9\) 項目=63\n)";
  const std::string got = m_machine.Read(kFile);
  EXPECT_TRUE(std::regex_match(got, std::regex(lines))) << got;
}

DWORD g_usersMayDo;

/// What the descriptor allows the users of the machine, which the log's account is not alone.
HANDLE WINAPI NoteAccess(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes,
                         DWORD disposition, DWORD flags, HANDLE templateFile) {
  BOOL present = FALSE, defaulted = FALSE;
  ACL* list = nullptr;
  if (attributes != nullptr)
    GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &present, &list, &defaulted);
  for (DWORD i = 0; list != nullptr && i < list->AceCount; ++i) {
    void* entry = nullptr;
    GetAce(list, i, &entry);
    auto& allowed = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
    if (IsWellKnownSid(&allowed.SidStart, WinBuiltinUsersSid)) g_usersMayDo |= allowed.Mask;
  }
  return CreateFileW(path, access, share, attributes, disposition, flags, templateFile);
}

TEST_F(Log, EveryAccountMayAppendButNotChange) {
  g_usersMayDo = 0;
  const Replacement file(m_library, "CreateFileW", reinterpret_cast<void*>(NoteAccess));
  m_plain(0, 153, L"F", 7, L"made");
  EXPECT_EQ(g_usersMayDo, FILE_GENERIC_READ | FILE_APPEND_DATA);
  EXPECT_NE(m_machine.Read(kFile), "");
}

}  // namespace
}  // namespace tests
