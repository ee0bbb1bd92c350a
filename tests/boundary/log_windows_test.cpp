// The plain logging component, which stands beside the recorder here.

#include <gtest/gtest.h>

#include <regex>

#include "tests/support/test_machine.h"

namespace tests {
namespace {

using Form = void (*)(int, int, const wchar_t*, int, const wchar_t*);
using FormWithCode = void (*)(int, int, const wchar_t*, int, int, const wchar_t*);
using FormWithLabel = void (*)(int, int, const wchar_t*, int, const wchar_t*, const wchar_t*);

TEST(Log, AppendsALineForEachFormWithoutSetUp) {
  constexpr wchar_t kFile[] =
      L"C:\\ProgramData\\KBR-LTD\\QuietMIMOSA\\HarborLedge\\log\\SigilSetting.log";
  TestMachine machine;
  const auto plain = std::filesystem::absolute(SIGIL_BUILD_FOLDER "/log4cxx.dll");
  const HMODULE library = LoadLibraryW(plain.c_str());
  ASSERT_NE(library, nullptr);
  ASSERT_NE(library, GetModuleHandleW(L"log4cxx.dll")) << "that is the recorder";
  const auto form = [library](const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(library, name));
  };
  SetLastError(4711);
  reinterpret_cast<Form>(form("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH0@Z"))(1, 153, L"F", 7,
                                                                          L"透かし");
  reinterpret_cast<FormWithCode>(form("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WHH0@Z"))(5, 154, L"G", 8,
                                                                                   231, L"a\nb");
  reinterpret_cast<FormWithLabel>(form("?LogOutDetail@Log4cxxMgr@@SAXHHPB_WH00@Z"))(0, 155, L"H", 9,
                                                                                    L"項目", L"63");
  EXPECT_EQ(GetLastError(), 4711U);
  const std::string head =
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} )" + std::to_string(GetCurrentProcessId()) + " ";
  const std::string lines = head + R"(1 153 F\(7\) 透かし\n)" + head +
                            R"(5 154 G\(8\) a\\nb \(code 231\)\n)" + head +
                            R"(0 155 H\(9\) 項目=63\n)";
  const std::string got = machine.Read(kFile);
  EXPECT_TRUE(std::regex_match(got, std::regex(lines))) << got;
  FreeLibrary(library);
}

}  // namespace
}  // namespace tests
