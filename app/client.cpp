#include "app/client.h"

#include "platform/crt.h"
#include "platform/file.h"
#include "platform/profile.h"
#include "platform/utf.h"

namespace app {
namespace {

std::wstring Trimmed(std::wstring text) {
  while (!text.empty() && crt::iswspace(text.back()) != 0) text.pop_back();
  std::size_t first = 0;
  while (first < text.size() && crt::iswspace(text[first]) != 0) ++first;
  return text.substr(first);
}

}  // namespace

DeliveryFolder FindDeliveryFolder() {
  constexpr DWORD kCapacity = 1024;
  wchar_t value[kCapacity] = {};
  GetPrivateProfileStringW(L"Setting", L"EMSDir", L"", value, kCapacity, kClientIni);
  const std::wstring folder = Trimmed(value);
  if (folder.empty()) return {kDefaultDelivery, "the default: Client.ini names no EMSDir"};
  if (!PathIsDirectoryW(folder.c_str()))
    return {kDefaultDelivery, "the default: the EMSDir of Client.ini, " + platform::ToUtf8(folder) +
                                  ", is no folder"};
  return {folder, "EMSDir of Client.ini"};
}

}  // namespace app
