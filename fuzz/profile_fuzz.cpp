// Profile files: read, write, read what was written.

#include <cstdlib>
#include <cwchar>
#include <iterator>

#include "fuzz/machine.h"
#include "platform/profile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::Machine machine;
  constexpr wchar_t kPath[] = L"C:\\fuzz.ini";
  machine.Write("C/fuzz.ini", fuzz::Text(data, size));
  wchar_t text[64];
  GetPrivateProfileStringW(L"User", L"UserFullName", L"none", text,
                           static_cast<DWORD>(std::size(text)), kPath);
  GetPrivateProfileIntW(L"User", L"GetUserState", 0, kPath);
  if (WritePrivateProfileStringW(L"User", L"GetUserState", L"1", kPath) &&
      GetPrivateProfileIntW(L"User", L"GetUserState", 0, kPath) != 1)
    std::abort();
  return 0;
}
